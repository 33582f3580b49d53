// SPDX-License-Identifier: MIT
#include "ConfigCommand.h"

#include "Application.h"
#include "HostTrace.h"
#include "PagewiseSettings.h"

#include "CommandLine.h"

namespace {
const QString accountName = QStringLiteral("account-name");
}

QString ConfigCommand::name() const
{
    return QStringLiteral("config");
}

QString ConfigCommand::synopsis() const
{
    return QStringLiteral("account-name [NAME]");
}

QString ConfigCommand::summary() const
{
    return QStringLiteral("Shows or sets the social account name (\"\" clears it)");
}

QString ConfigCommand::description() const
{
    return QStringLiteral(
        "The social account name is what the plug-in's parser records as the author of "
        "drawings (pictures under /mnt/onboard/drawings/). Without NAME the "
        "setting is printed; with NAME it is set, and an empty NAME clears it. It is kept "
        "in the host's settings (QSettings, organisation \"tamber\"), not in the "
        "library.");
}

QVector<Command::Argument> ConfigCommand::arguments() const
{
    return {
        { QStringLiteral("account-name"), QStringLiteral("The setting; the only one."), QString() },
        { QStringLiteral("NAME"), QStringLiteral("The new value; an empty one clears the setting."),
            QStringLiteral("[NAME]") },
    };
}

QVector<Command::Example> ConfigCommand::examples() const
{
    return {
        { QStringLiteral("tamber config account-name pat.reads"),
            QStringLiteral("Sets the account name.") },
        { QStringLiteral("tamber config account-name \"\""), QStringLiteral("Clears it.") },
    };
}

Command::Needs ConfigCommand::needs() const
{
    Needs needs;
    needs.minimumArguments = 1;
    needs.maximumArguments = 2;
    needs.argumentsError = QStringLiteral("config needs a KEY and at most one VALUE");
    return needs;
}

int ConfigCommand::run(Application&, const Invocation& call) const
{
    const QStringList& arguments = call.arguments;
    if (arguments.first() != accountName)
        return Application::usageError(QStringLiteral("unknown setting \"%1\" (known: %2)")
                                           .arg(arguments.first(), accountName),
            this);

    HostTrace::Suppress ownBehalf;
    PagewiseSettings settings { Device() };
    if (arguments.size() == 2) {
        settings.setFacebookName(arguments.at(1));
        return Application::Success;
    }
    const QString name = settings.facebookName();
    if (name.isEmpty())
        Application::warn(QStringLiteral("no account name is set"));
    else
        Application::printLine(name);
    return Application::Success;
}
