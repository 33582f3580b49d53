// SPDX-License-Identifier: MIT
#ifndef COVERCOMMAND_H
#define COVERCOMMAND_H

#include "Command.h"

// cover BOOK -o FILE: writes the cover image that the plug-in's parser returns.
class CoverCommand : public Command
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
