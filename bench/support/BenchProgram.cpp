#include "BenchProgram.h"

#include "BenchCompat.h"
#include "Display.h"
#include "HostCompat.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

BenchProgram::BenchProgram(int& argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    workloadDir = takeOption(argc, argv, "workload");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // As the host program does: one zone for libzip's per-entry mktime.
    if (qEnvironmentVariableIsEmpty("TZ"))
        qputenv("TZ", ":/etc/localtime");
    // The settings that the parser reads, and Qt's runtime folder, in a folder
    // of their own.
    settingsDir = QDir::tempPath() + QStringLiteral("/tamber-bench-settings");
    QDir().mkpath(settingsDir);
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(settingsDir));
    qputenv("XDG_DATA_HOME", QFile::encodeName(settingsDir));
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QString runtime = settingsDir + QStringLiteral("/runtime");
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    }
}

std::unique_ptr<QApplication> BenchProgram::makeApplication(int& argc, char** argv)
{
    if (!Display::prepare(QStringLiteral("bench"), false))
        return nullptr;
    return Display::makeApplication(argc, argv);
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
