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
    void addOptions(QCommandLineParser& parser) const override;
    int run(Application& app, const QCommandLineParser& parser) const override;
};

#endif
