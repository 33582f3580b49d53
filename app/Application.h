#ifndef APPLICATION_H
#define APPLICATION_H

#include <QByteArray>
#include <QCommandLineOption>
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

    // The library that --library, TAMBER_LIBRARY or the default location
    // names. On failure the user has been told; exit with UsageError.
    bool openLibrary();
    // The plug-in that --plugin, TAMBER_PLUGIN or the default names, loaded
    // on first use. Null after telling the user why; exit with UsageError.
    PluginLoader* loadPlugin();

    // What a command that reads one stored book starts from.
    struct OpenedBook
    {
        int status = Success; // else the user has been told why: exit with it
        PluginLoader* loader = nullptr;
        QString id;
    };
    // Opens the library, loads the plug-in and resolves BOOK to a stored book:
    // UsageError when the library or the plug-in fails, Failed for a book that
    // the library does not hold.
    OpenedBook openBook(const QString& argument);

    QString libraryPath() const;
    // Empty when no option or variable names a plug-in and no candidate exists.
    QString pluginPath() const;
    // Where the plug-in is looked for, in order, when nothing names one.
    static QStringList pluginCandidates();

    // The options that every command takes, before or after its word.
    static QList<QCommandLineOption> commonOptions();
    // The options that only tamber without a command takes.
    static QList<QCommandLineOption> programOptions();

    static void print(const QByteArray& bytes);
    static void printLine(const QString& line);
    // "tamber: message" on standard error.
    static void warn(const QString& message);
    // Tells the user what was wrong and where to find help; returns UsageError.
    static int usageError(const QString& message, const Command* command = nullptr);

    // The command word of a command line: the first argument that is neither
    // an option nor the value of a global option.
    static QString commandName(const QStringList& arguments);

private:
    int runCommand(const Command& command, const QStringList& arguments);

    QStringList m_arguments;
    bool m_librarySet = false;
    QString m_library;
    bool m_pluginSet = false;
    QString m_plugin;
    std::unique_ptr<PluginLoader> m_loader;
};

#endif
