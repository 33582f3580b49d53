#include "Command.h"

#include <QCommandLineParser>

Command::~Command() = default;

QString Command::description() const
{
    return QString();
}

QList<QCommandLineOption> Command::options() const
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

void Command::addOptions(QCommandLineParser& parser) const
{
    parser.addOptions(options());
    for (const Argument& argument : arguments())
        parser.addPositionalArgument(argument.name, argument.description, argument.syntax);
}
