// SPDX-License-Identifier: MIT
#ifndef JXLBUDGETRUNNER_H
#define JXLBUDGETRUNNER_H

#include <QtGlobal>

#include <jxl/parallel_runner.h>

// libjxl's runner of parallel work, here in the calling thread, that stops a
// decode whose process has grown past a number of bytes since start(): libjxl
// gives up when its runner fails. libjxl 0.7 allocates with malloc and new, not
// through a JxlMemoryManager, and aborts where an allocation fails, so the
// runner is where its memory can be watched: before each group or band of rows,
// from the resident size the kernel counts. Until start(), and where the
// resident size cannot be read, nothing is stopped.
class JxlBudgetRunner
{
public:
    // Allows allowance more resident bytes than the process has now.
    void start(qint64 allowance);
    bool exceeded() const;

    // A JxlParallelRunner; the opaque pointer is the JxlBudgetRunner.
    static JxlParallelRetCode run(void* runner, void* jxl, JxlParallelRunInit init,
        JxlParallelRunFunction function, uint32_t begin, uint32_t end);

    // The process's resident bytes, -1 where unknown.
    static qint64 residentBytes();

private:
    qint64 startBytes = -1;
    qint64 allowance = 0;
};

#endif
