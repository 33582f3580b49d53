// SPDX-License-Identifier: MIT
#ifndef LISTCOMMAND_H
#define LISTCOMMAND_H

#include "Command.h"

// list [--json]: the books of the library.
class ListCommand : public Command
{
public:
    QString name() const override;
    QString synopsis() const override;
    QString summary() const override;
    QString description() const override;
    QList<CommandOption> options() const override;
    QVector<Example> examples() const override;
    Needs needs() const override;
    int run(Application& app, const Invocation& call) const override;
};

#endif
