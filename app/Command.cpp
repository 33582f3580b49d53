#include "Command.h"

#include <QCommandLineParser>

Command::~Command() = default;

bool Command::needsWindow() const
{
    return false;
}

void Command::addOptions(QCommandLineParser&) const { }
