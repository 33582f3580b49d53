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
    int run(Application& app, const CommandLine& parser) const override;
};

#endif
