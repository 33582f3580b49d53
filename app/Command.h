#ifndef COMMAND_H
#define COMMAND_H

#include "CommandLine.h"
#include <QList>
#include <QString>
#include <QVector>

class Application;

// One command of the tamber program ("import", "list", ...). Commands keep no
// state between runs; CommandTable holds one of each. What a command says about
// itself is the one source of its --help and of its part of the manual page
// (HelpText renders both).
class Command
{
public:
    // A positional argument as the help describes it.
    struct Argument
    {
        QString name; // "BOOK"
        QString description;
        QString syntax; // as the usage line shows it: "[SCRIPT]", "PATH..."
    };
    // A command line and what it does.
    struct Example
    {
        QString commandLine;
        QString description;
    };

    virtual ~Command();

    virtual QString name() const = 0;
    // The command's arguments as the help shows them, e.g. "PATH...".
    virtual QString synopsis() const = 0;
    // One line for the list of commands.
    virtual QString summary() const = 0;
    // What the command does beyond its summary, in paragraphs separated by a
    // blank line. A paragraph whose every line holds a tab is a table of
    // terms (before the tab) and their descriptions.
    virtual QString description() const;
    virtual QList<CommandOption> options() const;
    virtual QVector<Argument> arguments() const;
    virtual QVector<Example> examples() const;
    // Whether the command opens a window. The others run on Qt's offscreen
    // platform when no display is available.
    virtual bool needsWindow() const;
    // Adds options() to the parser; the arguments are the command's to check.
    void addOptions(CommandLine& parser) const;
    // Runs with the parsed command line; returns the exit status.
    virtual int run(Application& app, const CommandLine& parser) const = 0;
};

#endif
