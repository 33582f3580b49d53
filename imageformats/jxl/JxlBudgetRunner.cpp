// SPDX-License-Identifier: MIT
#include "JxlBudgetRunner.h"

#include <fcntl.h>
#include <unistd.h>

void JxlBudgetRunner::start(qint64 allowance)
{
    this->allowance = allowance;
    startBytes = residentBytes();
}

bool JxlBudgetRunner::exceeded() const
{
    if (startBytes < 0)
        return false;
    const qint64 now = residentBytes();
    return now >= 0 && now - startBytes > allowance;
}

JxlParallelRetCode JxlBudgetRunner::run(void* runner, void* jxl, JxlParallelRunInit init,
    JxlParallelRunFunction function, uint32_t begin, uint32_t end)
{
    const JxlParallelRetCode initialised = init(jxl, 1);
    if (initialised != 0)
        return initialised;
    const JxlBudgetRunner* budget = static_cast<const JxlBudgetRunner*>(runner);
    for (uint32_t i = begin; i < end; ++i) {
        if (budget->exceeded())
            return JXL_PARALLEL_RET_RUNNER_ERROR;
        function(jxl, i, 0);
    }
    return 0;
}

qint64 JxlBudgetRunner::residentBytes()
{
    // Read without Qt or stdio: it is asked before each piece of work.
    const int file = ::open("/proc/self/statm", O_RDONLY);
    if (file < 0)
        return -1;
    char text[128];
    const ssize_t length = ::read(file, text, sizeof text - 1);
    ::close(file);
    // The second number is the resident size in pages.
    qint64 pages = -1;
    int field = 0;
    for (ssize_t i = 0; i < length && field < 2; ++i) {
        if (text[i] == ' ') {
            if (++field == 2)
                break;
            pages = 0;
        } else if (field == 1 && text[i] >= '0' && text[i] <= '9') {
            pages = pages * 10 + (text[i] - '0');
        }
    }
    return field == 2 && pages >= 0 ? pages * sysconf(_SC_PAGESIZE) : -1;
}
