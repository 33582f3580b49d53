#include "SessionCommand.h"

#include "Application.h"
#include "GestureRegistration.h"
#include "PluginLoader.h"
#include "Session.h"
#include "SessionScript.h"
#include "SessionView.h"

#include <QCommandLineParser>
#include <QFile>

#include <iostream>
#include <string>

QString SessionCommand::name() const
{
    return QStringLiteral("session");
}

QString SessionCommand::synopsis() const
{
    return QStringLiteral("[--size WxH] [SCRIPT]");
}

QString SessionCommand::summary() const
{
    return QStringLiteral("Runs a script of host actions and prints a trace of the plug-in");
}

void SessionCommand::addOptions(QCommandLineParser& parser) const
{
    parser.addOption(QCommandLineOption(QStringLiteral("size"),
        QStringLiteral("The emulated screen (default: 1072x1448)."), QStringLiteral("WxH")));
    parser.addPositionalArgument(QStringLiteral("SCRIPT"),
        QStringLiteral("The script; standard input when absent or \"-\"."),
        QStringLiteral("[SCRIPT]"));
}

int SessionCommand::run(Application& app, const QCommandLineParser& parser) const
{
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() > 1)
        return Application::usageError(QStringLiteral("session takes one SCRIPT"), this);
    QSize screen = SessionView::defaultScreen();
    const QString size = parser.value(QStringLiteral("size"));
    if (!size.isEmpty() && !SessionView::parseSize(size, &screen))
        return Application::usageError(
            QStringLiteral("bad size \"%1\": expected WxH, such as 1072x1448").arg(size), this);

    const bool fromFile = !arguments.isEmpty() && arguments.first() != QLatin1String("-");
    QString script;
    if (fromFile) {
        QFile file(arguments.first());
        if (!file.open(QIODevice::ReadOnly)) {
            Application::warn(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
            return Application::Failed;
        }
        script = QString::fromUtf8(file.readAll());
    }
    if (!app.openLibrary())
        return Application::UsageError;
    PluginLoader* loader = app.loadPlugin();
    if (!loader)
        return Application::UsageError;

    registerGestureRecognizers();
    Session session(loader->plugin(), screen);
    if (fromFile) {
        for (const ScriptLine& line : SessionScript::parse(script))
            session.run(line);
    } else {
        // Line by line as it comes, so that a person can type a session.
        std::string text;
        for (int number = 1; std::getline(std::cin, text); ++number) {
            for (ScriptLine line : SessionScript::parse(QString::fromStdString(text))) {
                line.number = number;
                session.run(line);
            }
        }
    }
    return session.failed() ? Application::Failed : Application::Success;
}
