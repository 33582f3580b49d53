// SPDX-License-Identifier: MIT
#ifndef APPLICATION_H
#define APPLICATION_H

#include <QByteArray>
#include "CommandLine.h"
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class Command;
class PluginLoader;

// The tamber program around its commands: the global options, the library
// file and the plug-in they name, the exit statuses, and where output goes
// (results to standard output, messages for people to standard error).
class Application
{
public:
    enum ExitStatus {
        Success = 0,
        Failed = 1, // the command ran but failed for some input
        UsageError = 2, // also a library or plug-in that cannot be opened
    };

    // Picks Qt's platform before QApplication exists: offscreen unless the
    // command shows a window. False, after telling the user, when it needs a
    // display and none is available: exit with UsageError.
    static bool prepareEnvironment(const QStringList& arguments);

    explicit Application(const QStringList& arguments);
    ~Application();

    int run();

    QString libraryPath() const;
    // Empty when no option or variable names a plug-in and no candidate exists.
    QString pluginPath() const;
    // Where the plug-in is looked for, in order, when nothing names one.
    static QStringList pluginCandidates();

    // The options that every command takes, before or after its word.
    static QList<CommandOption> commonOptions();
    // The options that only tamber without a command takes.
    static QList<CommandOption> programOptions();

    // Results to standard output. A write that fails (a closed pipe, a full
    // disk) is remembered and makes run() report it and return Failed.
    static void print(const QByteArray& bytes);
    // The line with its control characters escaped.
    static void printLine(const QString& line);
    static bool outputFailed();
    // "tamber: message" on standard error, control characters escaped.
    static void warn(const QString& message);
    // Control characters as \n, \t, \e, \xNN, so that a file name cannot
    // move the cursor, colour the terminal or break a line.
    static QString printable(const QString& text);
    // Tells the user what was wrong and where to find help; returns UsageError.
    static int usageError(const QString& message, const Command* command = nullptr);

    // Keeps the bytes of the arguments that do not survive decoding (names
    // that are not valid UTF-8), so that messages can show what was given.
    static void keepRawArguments(int argc, char** argv);
    // The bytes an argument was decoded from; empty when it decoded losslessly.
    static QByteArray rawArgument(const QString& argument);

    // The command word of a command line: the first argument that is neither
    // an option nor the value of a global option.
    static QString commandName(const QStringList& arguments);

private:
    int dispatch();
    // Parses the command's options, checks its arguments, opens what it
    // needs and runs it.
    int runCommand(const Command& command, const QStringList& arguments);
    // The library that --library, TAMBER_LIBRARY or the default location
    // names. On failure the user has been told.
    bool openLibrary(bool makeIfMissing);
    // The plug-in that --plugin, TAMBER_PLUGIN or the default names. Null
    // after telling the user why.
    PluginLoader* loadPlugin();

    QStringList m_arguments;
    bool m_librarySet = false;
    QString m_library;
    bool m_pluginSet = false;
    QString m_plugin;
    std::unique_ptr<PluginLoader> m_loader;
};

#endif
