// SPDX-License-Identifier: MIT
#ifndef RENDERCOMMAND_H
#define RENDERCOMMAND_H

#include "Command.h"

// render BOOK [--page N] [--size WxH] [--zoom Z] [--orientation O] -o FILE:
// what the reading view paints for one page, as an image file.
class RenderCommand : public Command
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
