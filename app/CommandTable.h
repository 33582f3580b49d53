// SPDX-License-Identifier: MIT
#ifndef COMMANDTABLE_H
#define COMMANDTABLE_H

#include <QString>
#include <QVector>

class Command;

// The commands of the tamber program. A new command is one class and one line
// in CommandTable.cpp.
class CommandTable
{
public:
    // Every command, in the order the help lists them.
    static const QVector<const Command*>& commands();
    // The command of that name, or null.
    static const Command* find(const QString& name);
};

#endif
