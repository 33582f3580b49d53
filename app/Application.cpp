// SPDX-License-Identifier: MIT
#include "Application.h"
#include "HostCompat.h"

#include "BookArgument.h"
#include "Command.h"
#include "CommandTable.h"
#include "Display.h"
#include "FileProblem.h"
#include "HelpText.h"
#include "Library.h"
#include "PluginLoader.h"

#include "CommandLine.h"
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

const QString pluginFileName = QStringLiteral("libcomicsreader.so");

CommandOption libraryOption()
{
    return CommandOption(QStringLiteral("library"),
        QStringLiteral("The library file, which import and session create when missing "
                       "(default: $TAMBER_LIBRARY, else "
                       "tamber/library.sqlite in $XDG_DATA_HOME)."),
        QStringLiteral("FILE"));
}

CommandOption pluginOption()
{
    return CommandOption(QStringLiteral("plugin"),
        QStringLiteral("The plug-in file (default: $TAMBER_PLUGIN, else %1 beside tamber or in "
                       "the plugins folder beside it).")
            .arg(pluginFileName),
        QStringLiteral("FILE"));
}

CommandOption helpOption()
{
    return CommandOption({ QStringLiteral("h"), QStringLiteral("help") },
        QStringLiteral("Shows the help of tamber, or of the command."));
}

CommandOption versionOption()
{
    return CommandOption(
        { QStringLiteral("v"), QStringLiteral("version") }, QStringLiteral("Shows the version."));
}

CommandOption manOption()
{
    return CommandOption(QStringLiteral("man"),
        QStringLiteral("Prints the manual page, every command's help, as roff (try "
                       "\"tamber --man | man -l -\")."));
}

// An option as a usage error names it: its shortest spelling and its value,
// "-o FILE".
QString optionSyntax(const Command& command, const QString& name)
{
    for (const CommandOption& option : command.options()) {
        if (!option.names().contains(name))
            continue;
        const QString shortest = option.names().first();
        return (shortest.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + shortest
            + QLatin1Char(' ') + option.valueName();
    }
    return name;
}

// errno of the first write to standard output that failed, else 0.
int outputError = 0;

QHash<QString, QByteArray>& rawArguments()
{
    static QHash<QString, QByteArray> arguments;
    return arguments;
}

} // namespace

bool Application::prepareEnvironment(const QStringList& arguments)
{
    const Command* command = CommandTable::find(commandName(arguments));
    const bool wantsHelp
        = arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h"));
    const bool needsWindow = command && command->needsWindow() && !wantsHelp;
    return Display::prepare(command ? command->name() : QString(), needsWindow);
}

Application::Application(const QStringList& arguments)
    : m_arguments(arguments)
{
}

Application::~Application()
{
    Library::close();
}

void Application::keepRawArguments(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray raw(argv[i]);
        if (!FileProblem::isRepresentable(raw))
            rawArguments().insert(QFile::decodeName(raw), raw);
    }
}

QByteArray Application::rawArgument(const QString& argument)
{
    return rawArguments().value(argument);
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
    int status = dispatch();
    if (outputFailed()) {
        warn(QStringLiteral("cannot write to standard output: %1")
                 .arg(QString::fromLocal8Bit(std::strerror(outputError))));
        if (status == Success)
            status = Failed;
    }
    return status;
}

int Application::dispatch()
{
    CommandLine parser(CommandLine::StopAtFirstArgument);
    const CommandOption library = libraryOption();
    const CommandOption plugin = pluginOption();
    const CommandOption helpFlag = helpOption();
    const CommandOption versionFlag = versionOption();
    const CommandOption manFlag = manOption();
    parser.addOptions({ library, plugin, helpFlag, versionFlag, manFlag });
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
    if (parser.isSet(manFlag)) {
        print(HelpText::manPage().toUtf8());
        return Success;
    }
    if (parser.isSet(helpFlag) && !command) {
        print(HelpText::programHelp().toUtf8());
        return Success;
    }
    if (rest.isEmpty()) {
        std::fputs(HelpText::programHelp().toUtf8().constData(), stderr);
        return UsageError;
    }
    if (!command && rest.first().startsWith(QLatin1Char('-')))
        return usageError(QStringLiteral("unknown option \"%1\"").arg(rest.first()));
    if (!command)
        return usageError(QStringLiteral("unknown command \"%1\"").arg(rest.first()));
    return runCommand(*command,
        QStringList { QStringLiteral("tamber") } + rest.mid(1)
            + (parser.isSet(helpFlag) ? QStringList { QStringLiteral("--help") } : QStringList()));
}

int Application::runCommand(const Command& command, const QStringList& arguments)
{
    // The global options may also follow the command word.
    CommandLine parser;
    const CommandOption library = libraryOption();
    const CommandOption plugin = pluginOption();
    const CommandOption helpFlag = helpOption();
    parser.addOptions({ library, plugin, helpFlag });
    command.addOptions(parser);
    if (!parser.parse(arguments))
        return usageError(parser.errorText(), &command);
    if (parser.isSet(helpFlag)) {
        print(HelpText::commandHelp(command).toUtf8());
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

    const Command::Needs needs = command.needs();
    Command::Invocation call { parser, parser.positionalArguments(), nullptr, QString() };
    const int count = call.arguments.size();
    if (count < needs.minimumArguments
        || (needs.maximumArguments >= 0 && count > needs.maximumArguments))
        return usageError(needs.argumentsError, &command);
    if (!needs.requiredOption.isEmpty() && parser.value(needs.requiredOption).isEmpty())
        return usageError(QStringLiteral("%1 needs %2")
                              .arg(command.name(), optionSyntax(command, needs.requiredOption)),
            &command);
    if (needs.library != Command::Needs::NoLibrary || needs.book) {
        if (!openLibrary(needs.library == Command::Needs::LibraryMadeIfMissing))
            return UsageError;
    }
    if (needs.plugin) {
        call.loader = loadPlugin();
        if (!call.loader)
            return UsageError;
    }
    if (needs.book) {
        call.book = BookArgument::find(call.arguments.first());
        if (call.book.isEmpty())
            return Failed;
    }
    return command.run(*this, call);
}

QList<CommandOption> Application::commonOptions()
{
    return { libraryOption(), pluginOption(), helpOption() };
}

QList<CommandOption> Application::programOptions()
{
    return { versionOption(), manOption() };
}

QStringList Application::pluginCandidates()
{
    // As built, the plug-in lies beside tamber; as installed, in the plugins
    // folder beside it (cmake/Install.cmake).
    const QString folder = QCoreApplication::applicationDirPath();
    return { folder + QLatin1Char('/') + pluginFileName,
        folder + QStringLiteral("/plugins/") + pluginFileName };
}

bool Application::openLibrary(bool makeIfMissing)
{
    if (Library::isOpen())
        return true;
    // Commands that only read must not make an empty library of a mistyped path.
    if (!makeIfMissing && !QFileInfo(libraryPath()).exists()) {
        warn(QStringLiteral("%1: no such library; \"tamber import\" makes one").arg(libraryPath()));
        return false;
    }
    if (Library::open(libraryPath()))
        return true;
    warn(QStringLiteral("cannot open the library: %1").arg(Library::lastError()));
    return false;
}

PluginLoader* Application::loadPlugin()
{
    if (m_loader && m_loader->plugin())
        return m_loader.get();
    if (pluginPath().isEmpty()) {
        warn(QStringLiteral("cannot load the plug-in: found none at %1; --plugin FILE or "
                            "TAMBER_PLUGIN names one")
                 .arg(pluginCandidates().join(QStringLiteral(" or "))));
        return nullptr;
    }
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
    for (const QString& candidate : pluginCandidates()) {
        if (QFileInfo(candidate).exists())
            return candidate;
    }
    return QString();
}

void Application::print(const QByteArray& bytes)
{
    if (outputError)
        return;
    errno = 0;
    if (std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) != size_t(bytes.size())
        || std::fflush(stdout) != 0) {
        outputError = errno ? errno : EIO;
    }
}

void Application::printLine(const QString& line)
{
    print(printable(line).toUtf8() + '\n');
}

bool Application::outputFailed()
{
    return outputError != 0;
}

void Application::warn(const QString& message)
{
    if (!outputError)
        std::fflush(stdout);
    std::fputs(QStringLiteral("tamber: %1\n").arg(printable(message)).toUtf8().constData(), stderr);
    std::fflush(stderr);
}

QString Application::printable(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        const ushort code = c.unicode();
        if (code >= 0x20 && code != 0x7f && !(code >= 0x80 && code < 0xa0)) {
            result += c;
            continue;
        }
        switch (code) {
        case '\n':
            result += QLatin1String("\\n");
            break;
        case '\t':
            result += QLatin1String("\\t");
            break;
        case '\r':
            result += QLatin1String("\\r");
            break;
        case 0x1b:
            result += QLatin1String("\\e");
            break;
        default:
            result += QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'));
        }
    }
    return result;
}

int Application::usageError(const QString& message, const Command* command)
{
    warn(message);
    const QString hint = command ? QStringLiteral("tamber %1 --help").arg(command->name())
                                 : QStringLiteral("tamber --help");
    std::fputs(QStringLiteral("Try \"%1\".\n").arg(hint).toUtf8().constData(), stderr);
    return UsageError;
}
