// SPDX-License-Identifier: MIT
#ifndef COMMAND_H
#define COMMAND_H

#include "CommandLine.h"
#include <QList>
#include <QStringList>
#include <QString>
#include <QVector>

class Application;
class PluginLoader;

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

    // What the command needs before it runs. Application::runCommand checks
    // the arguments and opens what is named here, once and in the same words
    // for every command; a usage error or a failure to open ends the run.
    struct Needs
    {
        enum LibraryUse { NoLibrary, ExistingLibrary, LibraryMadeIfMissing };

        int minimumArguments = 0;
        int maximumArguments = 0; // -1: any number
        QString argumentsError; // the usage error when their number is wrong
        QString requiredOption; // the name of an option that must be given
        LibraryUse library = NoLibrary;
        bool plugin = false;
        // The first argument names a stored book (BOOK); implies an existing library.
        bool book = false;

        // One BOOK and nothing else, with the plug-in to show it if asked.
        static Needs oneBook(const QString& command, bool plugin);
    };
    // What the command starts from.
    struct Invocation
    {
        const CommandLine& options;
        QStringList arguments;
        PluginLoader* loader = nullptr; // when it needs the plug-in
        QString book; // the book's id, when it needs a book
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
    virtual Needs needs() const = 0;
    // Adds options() to the parser.
    void addOptions(CommandLine& parser) const;
    // Runs once what needs() names is there; returns the exit status.
    virtual int run(Application& app, const Invocation& call) const = 0;
};

#endif
