// SPDX-License-Identifier: MIT
#ifndef SESSIONCOMMAND_H
#define SESSIONCOMMAND_H

#include "Command.h"

// session [--size WxH] [SCRIPT]: runs a script of host actions and prints a
// trace of what the plug-in does.
class SessionCommand : public Command
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
