// SPDX-License-Identifier: MIT
#ifndef READCOMMAND_H
#define READCOMMAND_H

#include "Command.h"

// read BOOK [--size WxH]: the reading view in a window, for a person to read.
class ReadCommand : public Command
{
public:
    QString name() const override;
    QString synopsis() const override;
    QString summary() const override;
    bool needsWindow() const override;
    QString description() const override;
    QList<CommandOption> options() const override;
    QVector<Argument> arguments() const override;
    QVector<Example> examples() const override;
    Needs needs() const override;
    int run(Application& app, const Invocation& call) const override;
};

#endif
