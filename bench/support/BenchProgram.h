// SPDX-License-Identifier: MIT
#ifndef BENCHPROGRAM_H
#define BENCHPROGRAM_H

#include "Workload.h"

#include <QApplication>
#include <QString>
#include <QStringList>

#include <memory>

// What every benchmark program does first and last: Google Benchmark's flags,
// then its own (--workload=DIR, the folder that bench-workload made), and
// BenchEnvironment's environment.
class BenchProgram
{
public:
    // Call before QApplication, which must not see the benchmark flags.
    BenchProgram(int& argc, char** argv);

    // BenchEnvironment's application object.
    static std::unique_ptr<QApplication> makeApplication(int& argc, char** argv);
    // Removes --NAME=VALUE from the arguments and returns VALUE.
    static QString takeOption(int& argc, char** argv, const char* name);
    // Loads the workload named by --workload; false after printing why.
    bool loadWorkload();
    const Workload& workload() const { return loaded; }
    bool isSmoke() const { return loaded.scale == QLatin1String("smoke"); }
    // The folder of the built programs: tamber, the plug-in, the extractor.
    static QString binDir();

    int run();

private:
    QString workloadDir;
    Workload loaded;
};

#endif
