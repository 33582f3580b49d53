// SPDX-License-Identifier: MIT
#include "BenchEnvironment.h"

#include "Display.h"
#include "HostCompat.h"

#include <QDir>
#include <QFile>

namespace BenchEnvironment {

void prepare()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // As the host program does: one zone for libzip's per-entry mktime.
    if (qEnvironmentVariableIsEmpty("TZ"))
        qputenv("TZ", ":/etc/localtime");
    // The settings that the parser reads, and Qt's runtime folder, in a folder
    // of their own.
    const QString settingsDir = QDir::tempPath() + QStringLiteral("/tamber-bench-settings");
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

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    if (!Display::prepare(QStringLiteral("bench"), false))
        return nullptr;
    return Display::makeApplication(argc, argv);
}

} // namespace BenchEnvironment
