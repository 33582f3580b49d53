// SPDX-License-Identifier: MIT
#include "PluginCommand.h"

#include "Application.h"
#include "PluginInterface.h"
#include "PluginLoader.h"
#include "TraceJson.h"

#include "CommandLine.h"
#include <QFileInfo>

QString PluginCommand::name() const
{
    return QStringLiteral("plugin");
}

QString PluginCommand::synopsis() const
{
    return QStringLiteral("[--json]");
}

QString PluginCommand::summary() const
{
    return QStringLiteral("Loads the plug-in and shows its verification text and file types");
}

QString PluginCommand::description() const
{
    return QStringLiteral(
        "Loads the plug-in the way the device does and prints its file, its verification "
        "text, the MIME types and the file patterns it declares, in the plug-in's order. "
        "The verification text is read from the file's .qtplugin section before any of "
        "the plug-in's code runs; a plug-in whose Qt version, debug flag or build key "
        "differ from the device's is refused with exit status 2.");
}

QList<CommandOption> PluginCommand::options() const
{
    return { CommandOption(QStringLiteral("json"),
        QStringLiteral("Prints {\"file\", \"verification\", \"mimeTypes\", "
                       "\"fileExtensions\"} as JSON instead.")) };
}

QVector<Command::Example> PluginCommand::examples() const
{
    return { { QStringLiteral("tamber --plugin build/bin/libcomicsreader.so plugin"),
        QStringLiteral("Checks a freshly built plug-in.") } };
}

Command::Needs PluginCommand::needs() const
{
    Needs needs;
    needs.argumentsError = QStringLiteral("plugin takes no arguments");
    needs.plugin = true;
    return needs;
}

int PluginCommand::run(Application&, const Invocation& call) const
{
    const PluginLoader* loader = call.loader;

    const QString file = QFileInfo(loader->fileName()).absoluteFilePath();
    const QString verification = QString::fromLatin1(loader->verificationText());
    const QStringList mimeTypes = loader->plugin()->mimeTypes();
    const QStringList patterns = loader->plugin()->fileExtensions();

    if (call.options.isSet(QStringLiteral("json"))) {
        Application::print(TraceJson::object({ { QStringLiteral("file"), TraceJson::string(file) },
                               { QStringLiteral("verification"), TraceJson::string(verification) },
                               { QStringLiteral("mimeTypes"), TraceJson::strings(mimeTypes) },
                               { QStringLiteral("fileExtensions"), TraceJson::strings(patterns) } })
            + '\n');
        return Application::Success;
    }

    const QString indent(15, QLatin1Char(' '));
    Application::printLine(QStringLiteral("file:          %1").arg(file));
    // One printed line per line of the text: printLine escapes line breaks.
    const QStringList fields = verification.split(QLatin1Char('\n'));
    for (int i = 0; i < fields.size(); ++i)
        Application::printLine((i == 0 ? QStringLiteral("verification:  ") : indent) + fields.at(i));
    Application::printLine(
        QStringLiteral("MIME types:    %1").arg(mimeTypes.join(QStringLiteral(" "))));
    Application::printLine(
        QStringLiteral("file patterns: %1").arg(patterns.join(QStringLiteral(" "))));
    return Application::Success;
}
