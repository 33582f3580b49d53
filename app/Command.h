#ifndef COMMAND_H
#define COMMAND_H

#include <QString>

class Application;
class QCommandLineParser;

// One command of the tamber program ("import", "list", ...). Commands keep no
// state between runs; CommandTable holds one of each.
class Command
{
public:
    virtual ~Command();

    virtual QString name() const = 0;
    // The command's arguments as the help shows them, e.g. "PATH...".
    virtual QString synopsis() const = 0;
    // One line for the list of commands.
    virtual QString summary() const = 0;
    // Whether the command opens a window. The others run on Qt's offscreen
    // platform when no display is available.
    virtual bool needsWindow() const;
    // Adds the command's own options and positional arguments.
    virtual void addOptions(QCommandLineParser& parser) const;
    // Runs with the parsed command line; returns the exit status.
    virtual int run(Application& app, const QCommandLineParser& parser) const = 0;
};

#endif
