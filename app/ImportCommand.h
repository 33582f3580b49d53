// SPDX-License-Identifier: MIT
#ifndef IMPORTCOMMAND_H
#define IMPORTCOMMAND_H

#include "Command.h"

// import PATH...: parses comic files into the library, one line per book.
class ImportCommand : public Command
{
public:
    QString name() const override;
    QString synopsis() const override;
    QString summary() const override;
    QString description() const override;
    QVector<Argument> arguments() const override;
    QVector<Example> examples() const override;
    Needs needs() const override;
    int run(Application& app, const Invocation& call) const override;
};

#endif
