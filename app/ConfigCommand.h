// SPDX-License-Identifier: MIT
#ifndef CONFIGCOMMAND_H
#define CONFIGCOMMAND_H

#include "Command.h"

// config account-name [NAME]: shows or sets the host's settings.
class ConfigCommand : public Command
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
