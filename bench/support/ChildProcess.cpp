// SPDX-License-Identifier: MIT
#include "ChildProcess.h"

#include <QFile>
#include <QTemporaryFile>

#include <chrono>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

QByteArray readAll(int fd)
{
    QByteArray bytes;
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count <= 0)
            break;
        bytes.append(buffer, int(count));
    }
    return bytes;
}

} // namespace

ChildProcess::Result ChildProcess::run(
    const QStringList& command, const QStringList& environment, bool keepOutput)
{
    Result result;
    QList<QByteArray> argumentBytes;
    for (const QString& argument : command)
        argumentBytes << QFile::encodeName(argument);
    std::vector<char*> argv;
    for (QByteArray& argument : argumentBytes)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    QList<QByteArray> environmentBytes;
    for (char** entry = environ; *entry; ++entry)
        environmentBytes << QByteArray(*entry);
    for (const QString& entry : environment)
        environmentBytes << entry.toLocal8Bit();
    std::vector<char*> envp;
    for (QByteArray& entry : environmentBytes)
        envp.push_back(entry.data());
    envp.push_back(nullptr);

    // Standard error goes to a file rather than a pipe, so that a chatty child
    // never blocks on it.
    QTemporaryFile errors;
    if (!errors.open())
        return result;
    int outputPipe[2] = { -1, -1 };
    if (keepOutput && ::pipe2(outputPipe, O_CLOEXEC) != 0)
        return result;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (keepOutput)
        posix_spawn_file_actions_adddup2(&actions, outputPipe[1], STDOUT_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, errors.handle(), STDERR_FILENO);

    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    const int spawnError
        = posix_spawnp(&pid, argv.front(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (keepOutput)
        ::close(outputPipe[1]);
    if (spawnError != 0) {
        if (keepOutput)
            ::close(outputPipe[0]);
        result.errors = QByteArray("cannot start ") + argumentBytes.first();
        return result;
    }
    if (keepOutput) {
        result.output = readAll(outputPipe[0]);
        ::close(outputPipe[0]);
    }
    int status = 0;
    struct rusage usage = {};
    while (::wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) { }
    const auto end = std::chrono::steady_clock::now();

    result.started = true;
    result.seconds = std::chrono::duration<double>(end - start).count();
    result.peakKiB = usage.ru_maxrss;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    // Read through the descriptor the child wrote to: Qt 4's file object
    // still takes the file for the empty one it opened.
    ::lseek(errors.handle(), 0, SEEK_SET);
    result.errors = readAll(errors.handle());
    return result;
}
