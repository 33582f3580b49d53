// SPDX-License-Identifier: MIT
#include "Command.h"
#include "HostCompat.h"

#include "CommandLine.h"

Command::~Command() = default;

QString Command::description() const
{
    return QString();
}

QList<CommandOption> Command::options() const
{
    return {};
}

QVector<Command::Argument> Command::arguments() const
{
    return {};
}

QVector<Command::Example> Command::examples() const
{
    return {};
}

bool Command::needsWindow() const
{
    return false;
}

void Command::addOptions(CommandLine& parser) const
{
    parser.addOptions(options());
}

Command::Needs Command::Needs::oneBook(const QString& command, bool plugin)
{
    Needs needs;
    needs.minimumArguments = needs.maximumArguments = 1;
    needs.argumentsError = QStringLiteral("%1 needs one BOOK").arg(command);
    needs.plugin = plugin;
    needs.book = true;
    return needs;
}
