// SPDX-License-Identifier: MIT
#include "Application.h"
#include "Display.h"
#include "HostCompat.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <csignal>
#include <unistd.h>

int main(int argc, char** argv)
{
    // A reader that goes away (tamber import | head -1) must not kill an
    // import half-way: writes then fail with EPIPE, which the program reports.
    std::signal(SIGPIPE, SIG_IGN);
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    Application::keepRawArguments(argc, argv);
    // libzip turns every entry's time into a date with mktime, and glibc reads
    // the zone file again on each call while TZ is unset: name the zone once.
    if (qEnvironmentVariableIsEmpty("TZ"))
        qputenv("TZ", ":/etc/localtime");
    // Qt asks for a runtime folder and warns on every run when the environment
    // names none (root shells, CI): name the one Qt would fall back to.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QString runtime
            = QDir::tempPath() + QStringLiteral("/runtime-") + QString::number(getuid());
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    }
    if (!Application::prepareEnvironment(arguments))
        return Application::UsageError;
    // The plug-in's debug lines are for developers: QT_LOGGING_RULES=default.debug=true
    // shows them, since environment rules take precedence over these.
    HostCompat::showDebugLines(false);

    // The command line is tamber's alone: Qt would take "--plugin FILE" as
    // its own option. Widgets, because the plug-in's reading view is one.
    int qtArgc = 1;
    const std::unique_ptr<QApplication> qtApplication = Display::makeApplication(qtArgc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tamber"));
    QCoreApplication::setOrganizationName(QStringLiteral("tamber"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TAMBER_VERSION));
    return Application(arguments).run();
}
