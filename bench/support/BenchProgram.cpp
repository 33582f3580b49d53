// SPDX-License-Identifier: MIT
#include "BenchProgram.h"

#include "BenchEnvironment.h"
#include "QtCompat.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

BenchProgram::BenchProgram(int& argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    workloadDir = takeOption(argc, argv, "workload");
    BenchEnvironment::prepare();
}

std::unique_ptr<QApplication> BenchProgram::makeApplication(int& argc, char** argv)
{
    return BenchEnvironment::makeApplication(argc, argv);
}

QString BenchProgram::takeOption(int& argc, char** argv, const char* name)
{
    const QByteArray prefix = QByteArray("--") + name + '=';
    QString value;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], prefix.constData(), size_t(prefix.size())) == 0)
            value = QString::fromLocal8Bit(argv[i] + prefix.size());
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    argv[argc] = nullptr;
    return value;
}

bool BenchProgram::loadWorkload()
{
    QString error;
    if (workloadDir.isEmpty())
        error = QStringLiteral("--workload=DIR is needed (make one with bench-workload)");
    else if (Workload::load(workloadDir, &loaded, &error))
        return true;
    std::fprintf(stderr, "%s\n", qPrintable(error));
    return false;
}

QString BenchProgram::binDir()
{
    return QCoreApplication::applicationDirPath();
}

int BenchProgram::run()
{
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
