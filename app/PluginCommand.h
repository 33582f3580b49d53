// SPDX-License-Identifier: MIT
#ifndef PLUGINCOMMAND_H
#define PLUGINCOMMAND_H

#include "Command.h"

// plugin [--json]: the loaded plug-in, its verification text and file types.
class PluginCommand : public Command
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
