// SPDX-License-Identifier: MIT
#ifndef SHOWCOMMAND_H
#define SHOWCOMMAND_H

#include "Command.h"

// show BOOK [--json]: one book's record and its page records in reading order.
class ShowCommand : public Command
{
public:
    QString name() const override;
    QString synopsis() const override;
    QString summary() const override;
    QString description() const override;
    QList<CommandOption> options() const override;
    QVector<Argument> arguments() const override;
    QVector<Example> examples() const override;
    Needs needs() const override;
    int run(Application& app, const Invocation& call) const override;
};

#endif
