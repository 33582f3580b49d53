#include "Application.h"

#include "Command.h"
#include "CommandTable.h"
#include "Library.h"
#include "PluginLoader.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

#include <cstdio>

namespace {

const QString pluginFileName = QStringLiteral("libcomicsreader.so");

QCommandLineOption libraryOption()
{
    return QCommandLineOption(QStringLiteral("library"),
        QStringLiteral("The library file (default: $TAMBER_LIBRARY, else %1).")
            .arg(QDir::toNativeSeparators(Library::defaultPath())),
        QStringLiteral("FILE"));
}

QCommandLineOption pluginOption()
{
    return QCommandLineOption(QStringLiteral("plugin"),
        QStringLiteral("The plug-in file (default: $TAMBER_PLUGIN, else %1 beside tamber).")
            .arg(pluginFileName),
        QStringLiteral("FILE"));
}

QCommandLineOption helpOption()
{
    return QCommandLineOption(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Shows this help."));
}

QCommandLineOption versionOption()
{
    return QCommandLineOption(
        { QStringLiteral("v"), QStringLiteral("version") }, QStringLiteral("Shows the version."));
}

bool displayAvailable()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

// QCommandLineParser's help without its first line, which names the program
// by its full path.
QString optionsText(const QCommandLineParser& parser)
{
    const QString text = parser.helpText();
    const int start = text.indexOf(QLatin1String("\nOptions:"));
    return start < 0 ? QString() : text.mid(start + 1);
}

} // namespace

bool Application::prepareEnvironment(const QStringList& arguments)
{
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return true;
    // Commands without a window never need a display, not even when one is there.
    const Command* command = CommandTable::find(commandName(arguments));
    const bool wantsHelp
        = arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h"));
    if (!command || !command->needsWindow() || wantsHelp) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return true;
    }
    if (!displayAvailable()) {
        warn(QStringLiteral("'%1' opens a window, and no display is available (DISPLAY is not "
                            "set); try it under xvfb-run")
                 .arg(command->name()));
        return false;
    }
    return true;
}

Application::Application(const QStringList& arguments)
    : m_arguments(arguments)
{
    // The plug-in's debug lines are for developers: QT_LOGGING_RULES=default.debug=true
    // shows them, since environment rules take precedence over these.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

Application::~Application()
{
    Library::close();
}

QString Application::commandName(const QStringList& arguments)
{
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (argument == QLatin1String("--library") || argument == QLatin1String("--plugin"))
            ++i;
        else if (argument == QLatin1String("--"))
            return arguments.value(i + 1);
        else if (!argument.startsWith(QLatin1Char('-')))
            return argument;
    }
    return QString();
}

int Application::run()
{
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption library = libraryOption();
    const QCommandLineOption plugin = pluginOption();
    const QCommandLineOption helpFlag = helpOption();
    const QCommandLineOption versionFlag = versionOption();
    parser.addOptions({ library, plugin, helpFlag, versionFlag });
    if (!parser.parse(m_arguments))
        return usageError(parser.errorText());

    m_librarySet = parser.isSet(library);
    m_library = parser.value(library);
    m_pluginSet = parser.isSet(plugin);
    m_plugin = parser.value(plugin);

    const QStringList rest = parser.positionalArguments();
    const Command* command = rest.isEmpty() ? nullptr : CommandTable::find(rest.first());
    if (parser.isSet(versionFlag)) {
        printLine(QStringLiteral("tamber %1").arg(QCoreApplication::applicationVersion()));
        return Success;
    }
    if (parser.isSet(helpFlag) && !command) {
        print(help().toUtf8());
        return Success;
    }
    if (rest.isEmpty()) {
        std::fputs(help().toUtf8().constData(), stderr);
        return UsageError;
    }
    if (!command)
        return usageError(QStringLiteral("unknown command \"%1\"").arg(rest.first()));
    return runCommand(*command,
        QStringList { QStringLiteral("tamber") } + rest.mid(1)
            + (parser.isSet(helpFlag) ? QStringList { QStringLiteral("--help") } : QStringList()));
}

int Application::runCommand(const Command& command, const QStringList& arguments)
{
    // The global options may also follow the command word.
    QCommandLineParser parser;
    const QCommandLineOption library = libraryOption();
    const QCommandLineOption plugin = pluginOption();
    const QCommandLineOption helpFlag = helpOption();
    parser.addOptions({ library, plugin, helpFlag });
    command.addOptions(parser);
    if (!parser.parse(arguments))
        return usageError(parser.errorText(), &command);
    if (parser.isSet(helpFlag)) {
        print(commandHelp(command, optionsText(parser)).toUtf8());
        return Success;
    }
    if (parser.isSet(library)) {
        m_librarySet = true;
        m_library = parser.value(library);
    }
    if (parser.isSet(plugin)) {
        m_pluginSet = true;
        m_plugin = parser.value(plugin);
    }
    return command.run(*this, parser);
}

QString Application::help()
{
    QString text = QStringLiteral(
        "Usage: tamber [--library FILE] [--plugin FILE] COMMAND [ARGUMENTS]\n"
        "\n"
        "Loads the comics reader plug-in the way the e-reader does and plays the host's\n"
        "part around it.\n"
        "\n"
        "Commands:\n");
    int width = 0;
    for (const Command* command : CommandTable::commands())
        width = qMax(width, (command->name() + QLatin1Char(' ') + command->synopsis()).size());
    for (const Command* command : CommandTable::commands()) {
        const QString usage = (command->name() + QLatin1Char(' ') + command->synopsis()).trimmed();
        text += QStringLiteral("  %1  %2\n").arg(usage, -width).arg(command->summary());
    }
    QCommandLineParser parser;
    parser.addOptions({ libraryOption(), pluginOption(), helpOption(), versionOption() });
    text += QLatin1Char('\n') + optionsText(parser);
    text += QStringLiteral("\nRun \"tamber COMMAND --help\" for the options of a command.\n"
                           "Exit status: 0 success, 1 some input failed, 2 usage error or a\n"
                           "library or plug-in that cannot be opened.\n");
    return text;
}

QString Application::commandHelp(const Command& command, const QString& options)
{
    return QStringLiteral("Usage: tamber %1 %2\n\n%3.\n\n%4")
        .arg(command.name(), command.synopsis(), command.summary(), options);
}

bool Application::openLibrary()
{
    if (Library::isOpen())
        return true;
    QString error;
    if (Library::open(libraryPath(), &error))
        return true;
    warn(QStringLiteral("cannot open the library: %1").arg(error));
    return false;
}

PluginLoader* Application::loadPlugin()
{
    if (m_loader && m_loader->plugin())
        return m_loader.get();
    m_loader = std::make_unique<PluginLoader>(pluginPath());
    if (m_loader->load())
        return m_loader.get();
    warn(QStringLiteral("cannot load the plug-in: %1").arg(m_loader->errorString()));
    return nullptr;
}

QString Application::libraryPath() const
{
    if (m_librarySet)
        return m_library;
    if (!qEnvironmentVariableIsEmpty("TAMBER_LIBRARY"))
        return qEnvironmentVariable("TAMBER_LIBRARY");
    return Library::defaultPath();
}

QString Application::pluginPath() const
{
    if (m_pluginSet)
        return m_plugin;
    if (!qEnvironmentVariableIsEmpty("TAMBER_PLUGIN"))
        return qEnvironmentVariable("TAMBER_PLUGIN");
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + pluginFileName;
}

void Application::print(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void Application::printLine(const QString& line)
{
    print(line.toUtf8() + '\n');
}

void Application::warn(const QString& message)
{
    std::fflush(stdout);
    std::fputs(QStringLiteral("tamber: %1\n").arg(message).toUtf8().constData(), stderr);
    std::fflush(stderr);
}

int Application::usageError(const QString& message, const Command* command)
{
    warn(message);
    const QString hint = command ? QStringLiteral("tamber %1 --help").arg(command->name())
                                 : QStringLiteral("tamber --help");
    std::fputs(QStringLiteral("Try \"%1\".\n").arg(hint).toUtf8().constData(), stderr);
    return UsageError;
}
