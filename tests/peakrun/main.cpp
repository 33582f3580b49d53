// SPDX-License-Identifier: MIT
// Runs a program and reports how it ended, how long it took and its peak
// resident memory, as wait4 gives it. The memory is the program's own: a
// process that exec()s keeps its parent's peak as its own, so a large test
// process cannot measure its children directly; this small one can.
//
//   peakrun REPORT SECONDS GUARD_MB PROGRAM [ARGUMENT...]
//
// The program inherits the standard streams. After SECONDS it is killed. A
// GUARD_MB above 0 bounds its data segment, so that a runaway allocation fails
// instead of taking the machine's memory. REPORT receives one line:
// "exited STATUS", "signalled SIGNAL" or "killed", then the peak in KiB and
// the time in milliseconds.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc < 5) {
        std::fputs("usage: peakrun REPORT SECONDS GUARD_MB PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    const int limitMs = std::atoi(argv[2]) * 1000;
    const rlim_t guard = rlim_t(std::atol(argv[3])) << 20;

    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        if (guard > 0) {
            const rlimit data { guard, guard };
            setrlimit(RLIMIT_DATA, &data);
        }
        execv(argv[4], argv + 4);
        _exit(127);
    }
    if (pid < 0)
        return 2;

    const int pidfd = int(syscall(SYS_pidfd_open, pid, 0));
    pollfd exited { pidfd, POLLIN, 0 };
    const bool finished = pidfd >= 0 && poll(&exited, 1, limitMs) == 1;
    if (!finished)
        kill(pid, SIGKILL);
    int status = 0;
    rusage usage {};
    wait4(pid, &status, 0, &usage);
    const long long elapsedMs = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start)
                                    .count();

    std::FILE* report = std::fopen(argv[1], "w");
    if (!report)
        return 2;
    if (!finished)
        std::fprintf(report, "killed");
    else if (WIFEXITED(status))
        std::fprintf(report, "exited %d", WEXITSTATUS(status));
    else
        std::fprintf(report, "signalled %d", WTERMSIG(status));
    std::fprintf(report, " %ld %lld\n", usage.ru_maxrss, elapsedMs);
    return std::fclose(report) == 0 ? 0 : 2;
}
