// SPDX-License-Identifier: MIT
#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QByteArray>
#include <QStringList>
#include <QtGlobal>

// Runs a program to its end and measures it as a whole process: the wall time
// from before the spawn to after the wait, and the child's own peak resident
// set (getrusage's ru_maxrss through wait4). Standard error is kept for a
// failure's message; standard output is kept only when asked for, and goes to
// /dev/null otherwise, as fast as a program can write.
class ChildProcess
{
public:
    struct Result
    {
        bool started = false;
        int exitCode = -1;
        double seconds = 0;
        qint64 peakKiB = 0;
        QByteArray output;
        QByteArray errors;

        bool ok() const { return started && exitCode == 0; }
    };

    // environment: NAME=VALUE pairs added to this process's environment.
    static Result run(
        const QStringList& command, const QStringList& environment = {}, bool keepOutput = false);
};

#endif
