#include "Command.h"

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
