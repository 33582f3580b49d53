// SPDX-License-Identifier: MIT
#include "HelpText.h"

#include "HostCompat.h"

#include "Application.h"
#include "Command.h"
#include "CommandTable.h"
#include "Display.h"
#include "Library.h"

#include <QCoreApplication>
#include <QStringList>
#include <QVector>

namespace {

const int lineWidth = 79;
// Terms wider than this start their description on a line of its own.
const int widestTermColumn = 28;

struct Row
{
    QString term;
    QString description;
};

const QString introduction = QStringLiteral(
    "Loads the comics reader plug-in the way the e-reader's reading application does, "
    "and plays the host's part around it: it imports comic files into a library, lists "
    "and shows the books, writes covers and rendered pages as images, opens a book in a "
    "reading window, and plays scripted sessions with a trace of everything the plug-in "
    "does.\n"
    "\n"
    "The plug-in reads comics packed as ZIP (.cbz) or as RAR (.cbr, through the unrar "
    "extractor beside tamber) and single pictures; \"tamber plugin\" lists the file "
    "patterns that import takes. The global options --library, "
    "--plugin and --help may also follow the command word.");

QVector<Row> environment()
{
    return {
        { QStringLiteral("TAMBER_LIBRARY"),
            QStringLiteral("The library file, unless --library names one.") },
        { QStringLiteral("TAMBER_PLUGIN"),
            QStringLiteral("The plug-in file, unless --plugin names one.") },
        { QStringLiteral("XDG_DATA_HOME"),
            QStringLiteral("Holds the default library, tamber/library.sqlite (default: "
                           "~/.local/share).") },
        { QStringLiteral("XDG_CONFIG_HOME"),
            QStringLiteral("Holds the settings, tamber/tamber.conf (default: ~/.config).") },
        { QStringLiteral("QT_LOGGING_RULES"),
            QStringLiteral("\"default.debug=true\" shows the plug-in's debug lines on "
                           "standard error; tamber hides them otherwise.") },
        { Display::variable(), Display::variableHelp() },
    };
}

QVector<Row> files()
{
    return {
        { QStringLiteral("$XDG_DATA_HOME/tamber/library.sqlite"),
            QStringLiteral("The library: one SQLite file with the books, their pages, "
                           "reading positions and dog ears.") },
        { QStringLiteral("libcomicsreader.so, plugins/libcomicsreader.so"),
            QStringLiteral("The plug-in, looked for in the folder of the tamber program "
                           "(after symbolic links) in this order: beside it, where the build "
                           "puts it, then in its plugins folder, where it is installed "
                           "(PREFIX/lib/tamber/plugins).") },
        { QStringLiteral("unrar"),
            QStringLiteral("The RAR extractor, which the plug-in runs from the folder of the "
                           "tamber program.") },
        { QStringLiteral("$XDG_CONFIG_HOME/tamber/tamber.conf"),
            QStringLiteral("The settings: the account name.") },
    };
}

// The paths that the rows above stand for, on this machine.
QString filesHere()
{
    const QStringList candidates = Application::pluginCandidates();
    return QStringLiteral("Here the default library is %1, and the plug-in is looked for as %2.")
        .arg(Library::defaultPath(), candidates.join(QStringLiteral(", then ")));
}

QVector<Row> exitStatuses()
{
    return {
        { QStringLiteral("0"), QStringLiteral("Success.") },
        { QStringLiteral("1"),
            QStringLiteral("The command ran, but some input failed: a file without pages, "
                           "an unknown book, a page that cannot be painted, a session line "
                           "that could not run.") },
        { QStringLiteral("2"),
            QStringLiteral("A usage error, or a library or plug-in that cannot be opened or "
                           "is refused.") },
    };
}

QVector<Command::Example> programExamples()
{
    return {
        { QStringLiteral("tamber import ~/Comics"),
            QStringLiteral("Imports every comic under ~/Comics into the default library.") },
        { QStringLiteral("tamber list"), QStringLiteral("Lists the books with their ids.") },
        { QStringLiteral("tamber read ~/Comics/Issue\\ 1.cbz"),
            QStringLiteral("Reads a book in a window.") },
        { QStringLiteral("tamber --library /tmp/try.sqlite render ~/Comics/Issue\\ 1.cbz "
                         "--page 2 -o page2.png"),
            QStringLiteral("Writes page 2 of a book in another library as a picture.") },
    };
}

QString optionTerm(const CommandOption& option)
{
    QStringList names;
    for (const QString& name : option.names())
        names << (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
    QString term = names.join(QStringLiteral(", "));
    if (!option.valueName().isEmpty())
        term += QLatin1Char(' ') + option.valueName();
    return term;
}

QVector<Row> optionRows(const QList<CommandOption>& options)
{
    QVector<Row> rows;
    for (const CommandOption& option : options)
        rows << Row { optionTerm(option), option.description() };
    return rows;
}

QVector<Row> argumentRows(const Command& command)
{
    QVector<Row> rows;
    for (const Command::Argument& argument : command.arguments())
        rows << Row { argument.name, argument.description };
    return rows;
}

QString usage(const Command& command)
{
    return QStringLiteral("tamber %1 %2").arg(command.name(), command.synopsis()).trimmed();
}

QString sentence(const QString& summary)
{
    return summary.endsWith(QLatin1Char('.')) ? summary : summary + QLatin1Char('.');
}

// A paragraph of the commands' descriptions is either prose or, when each of
// its lines holds a tab, a table of terms and descriptions.
bool isTable(const QString& paragraph)
{
    const QStringList lines = paragraph.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (!line.contains(QLatin1Char('\t')))
            return false;
    }
    return true;
}

QVector<Row> tableRows(const QString& paragraph)
{
    QVector<Row> rows;
    for (const QString& line : paragraph.split(QLatin1Char('\n'))) {
        const int tab = line.indexOf(QLatin1Char('\t'));
        rows << Row { line.left(tab), line.mid(tab + 1) };
    }
    return rows;
}

// ---- Plain text, for --help ----

// The text in lines of at most lineWidth columns, each indented; the first
// begins with prefix instead, when there is one.
QString wrapped(const QString& text, int indent, const QString& prefix = QString())
{
    const QStringList words = text.split(QLatin1Char(' '), QtCompat::SkipEmptyParts);
    QString result;
    QString line = prefix.isNull() ? QString(indent, QLatin1Char(' ')) : prefix;
    bool lineHasWord = false;
    for (const QString& word : words) {
        if (lineHasWord && line.size() + 1 + word.size() > lineWidth) {
            result += line + QLatin1Char('\n');
            line = QString(indent, QLatin1Char(' '));
            lineHasWord = false;
        }
        if (lineHasWord)
            line += QLatin1Char(' ');
        line += word;
        lineHasWord = true;
    }
    return result + line + QLatin1Char('\n');
}

QString plainTable(const QVector<Row>& rows, bool termsAlone = false)
{
    int column = 0;
    for (const Row& row : rows) {
        if (row.term.size() <= widestTermColumn)
            column = qMax(column, row.term.size());
    }
    const int indent = termsAlone ? 6 : 2 + column + 2;
    QString text;
    for (const Row& row : rows) {
        if (termsAlone || row.term.size() > column) {
            text += QStringLiteral("  ") + row.term + QLatin1Char('\n');
            text += wrapped(row.description, indent);
        } else {
            const QString term = QStringLiteral("  ") + row.term.leftJustified(column + 2);
            text += wrapped(row.description, indent, term);
        }
    }
    return text;
}

QString plainParagraphs(const QString& text)
{
    QStringList blocks;
    for (const QString& paragraph : text.split(QStringLiteral("\n\n"), QtCompat::SkipEmptyParts))
        blocks << (isTable(paragraph) ? plainTable(tableRows(paragraph)) : wrapped(paragraph, 0));
    return blocks.join(QStringLiteral("\n"));
}

QString plainSection(const QString& title, const QString& body)
{
    return body.isEmpty() ? QString() : QStringLiteral("\n%1:\n%2").arg(title, body);
}

QString plainExamples(const QVector<Command::Example>& examples)
{
    QVector<Row> rows;
    for (const Command::Example& example : examples)
        rows << Row { example.commandLine, example.description };
    return rows.isEmpty() ? QString() : plainTable(rows, true);
}

// ---- roff, for the man page ----

// Text that roff must not take as a request or an escape.
QString roffText(QString text)
{
    text.replace(QLatin1Char('\\'), QStringLiteral("\\e"));
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines) {
        if (line.startsWith(QLatin1Char('.')) || line.startsWith(QLatin1Char('\'')))
            line.prepend(QStringLiteral("\\&"));
    }
    return lines.join(QStringLiteral("\n"));
}

// Command lines and option names: minus signs and straight quotes as typed.
QString roffCode(const QString& text)
{
    QString code = roffText(text);
    code.replace(QLatin1Char('-'), QStringLiteral("\\-"));
    code.replace(QLatin1Char('\''), QStringLiteral("\\(aq"));
    return code;
}

QString roffBold(const QString& code)
{
    return QStringLiteral("\\fB%1\\fR").arg(roffCode(code));
}

QString roffOptionTerm(const CommandOption& option)
{
    QStringList names;
    for (const QString& name : option.names())
        names << roffBold((name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name);
    QString term = names.join(QStringLiteral(", "));
    if (!option.valueName().isEmpty())
        term += QStringLiteral(" \\fI%1\\fR").arg(roffCode(option.valueName()));
    return term;
}

QString roffTable(const QVector<Row>& rows, bool termsAreCode)
{
    QString text;
    for (const Row& row : rows) {
        text += QStringLiteral(".TP\n%1\n%2\n")
                    .arg(termsAreCode ? roffBold(row.term) : roffText(row.term),
                        roffText(row.description));
    }
    return text;
}

QString roffOptions(const QList<CommandOption>& options)
{
    QString text;
    for (const CommandOption& option : options)
        text += QStringLiteral(".TP\n%1\n%2\n")
                    .arg(roffOptionTerm(option), roffText(option.description()));
    return text;
}

QString roffParagraphs(const QString& text)
{
    QString roff;
    for (const QString& paragraph : text.split(QStringLiteral("\n\n"), QtCompat::SkipEmptyParts)) {
        if (isTable(paragraph))
            roff += roffTable(tableRows(paragraph), true);
        else
            roff += QStringLiteral(".PP\n%1\n").arg(roffText(paragraph));
    }
    return roff;
}

QString roffExamples(const QVector<Command::Example>& examples)
{
    QString text;
    for (const Command::Example& example : examples)
        text += QStringLiteral(".TP\n%1\n%2\n")
                    .arg(roffBold(example.commandLine), roffText(example.description));
    return text;
}

QString roffLabel(const QString& label)
{
    return QStringLiteral(".PP\n\\fI%1\\fR\n").arg(label);
}

} // namespace

QString HelpText::programHelp()
{
    QString text = QStringLiteral("Usage: tamber [OPTIONS] COMMAND [ARGUMENTS]\n\n");
    text += plainParagraphs(introduction);

    QVector<Row> commands;
    for (const Command* command : CommandTable::commands())
        commands << Row { (command->name() + QLatin1Char(' ') + command->synopsis()).trimmed(),
            sentence(command->summary()) };
    text += plainSection(QStringLiteral("Commands"), plainTable(commands));
    text += plainSection(QStringLiteral("Options"),
        plainTable(optionRows(Application::commonOptions() + Application::programOptions())));
    text += plainSection(QStringLiteral("Environment"), plainTable(environment()));
    text += plainSection(QStringLiteral("Files"),
        plainTable(files(), true) + QLatin1Char('\n') + wrapped(filesHere(), 0));
    text += plainSection(QStringLiteral("Exit status"), plainTable(exitStatuses()));
    text += plainSection(QStringLiteral("Examples"), plainExamples(programExamples()));
    text += QLatin1Char('\n')
        + wrapped(QStringLiteral("Run \"tamber COMMAND --help\" for a command's arguments, "
                                 "options and examples; \"man tamber\" shows every command's "
                                 "help on one page."),
            0);
    return text;
}

QString HelpText::commandHelp(const Command& command)
{
    QString text = QStringLiteral("Usage: %1\n\n").arg(usage(command));
    text += wrapped(sentence(command.summary()), 0);
    if (!command.description().isEmpty())
        text += QLatin1Char('\n') + plainParagraphs(command.description());
    const QVector<Row> arguments = argumentRows(command);
    if (!arguments.isEmpty())
        text += plainSection(QStringLiteral("Arguments"), plainTable(arguments));
    const QList<CommandOption> options = command.options();
    if (!options.isEmpty())
        text += plainSection(QStringLiteral("Options"), plainTable(optionRows(options)));
    text += plainSection(
        QStringLiteral("Global options"), plainTable(optionRows(Application::commonOptions())));
    text += plainSection(QStringLiteral("Examples"), plainExamples(command.examples()));
    return text;
}

QString HelpText::manPage()
{
    QString roff = QStringLiteral(".\\\" The help of the tamber program (tamber --man); not edited "
                                  "by hand.\n"
                                  ".TH TAMBER 1 \"\" \"tamber %1\" \"User Commands\"\n"
                                  ".nh\n"
                                  ".SH NAME\n"
                                  "tamber \\- host program for the comics reader plug-in\n"
                                  ".SH SYNOPSIS\n"
                                  ".B tamber\n"
                                  "[\\fIOPTIONS\\fR] \\fICOMMAND\\fR [\\fIARGUMENTS\\fR]\n"
                                  ".br\n"
                                  ".B tamber\n"
                                  "\\fICOMMAND\\fR \\fB\\-\\-help\\fR\n"
                                  ".SH DESCRIPTION\n")
                       .arg(QCoreApplication::applicationVersion());
    roff += roffParagraphs(introduction);
    roff += QStringLiteral(".SH OPTIONS\n")
        + roffOptions(Application::commonOptions() + Application::programOptions());

    roff += QStringLiteral(".SH COMMANDS\n");
    for (const Command* command : CommandTable::commands()) {
        roff += QStringLiteral(".SS \"%1\"\n")
                    .arg(roffCode(usage(*command))
                             .replace(QLatin1Char('"'), QStringLiteral("\\(dq")));
        roff += roffText(sentence(command->summary())) + QLatin1Char('\n');
        roff += roffParagraphs(command->description());
        const QVector<Row> arguments = argumentRows(*command);
        if (!arguments.isEmpty())
            roff += roffLabel(QStringLiteral("Arguments")) + roffTable(arguments, true);
        const QList<CommandOption> options = command->options();
        if (!options.isEmpty())
            roff += roffLabel(QStringLiteral("Options")) + roffOptions(options);
        const QVector<Command::Example> examples = command->examples();
        if (!examples.isEmpty())
            roff += roffLabel(QStringLiteral("Examples")) + roffExamples(examples);
    }

    roff += QStringLiteral(".SH ENVIRONMENT\n") + roffTable(environment(), true);
    roff += QStringLiteral(".SH FILES\n") + roffTable(files(), true);
    roff += QStringLiteral(".SH EXIT STATUS\n") + roffTable(exitStatuses(), true);
    roff += QStringLiteral(".SH EXAMPLES\n") + roffExamples(programExamples());
    return roff;
}
