// SPDX-License-Identifier: MIT
#include "SessionCommand.h"

#include "Application.h"
#include "GestureRegistration.h"
#include "PluginLoader.h"
#include "Session.h"
#include "SessionScript.h"
#include "SessionView.h"

#include "CommandLine.h"
#include <QFile>

#include <iostream>
#include <string>

QString SessionCommand::name() const
{
    return QStringLiteral("session");
}

QString SessionCommand::synopsis() const
{
    return QStringLiteral("[--size WxH] [SCRIPT]");
}

QString SessionCommand::summary() const
{
    return QStringLiteral("Runs a script of host actions and prints a trace of the plug-in");
}

QString SessionCommand::description() const
{
    return QStringLiteral(
        "Plays the host around the plug-in, one script line at a time, without a window, "
        "and prints a trace on standard output, one JSON object per line, in the order in "
        "which things happened:\n"
        "\n"
        "{\"signal\": NAME, ...}\tA signal that the reading view or the parser emitted, "
        "with its arguments.\n"
        "{\"host\": NAME, ...}\tA call that the plug-in made into the host library.\n"
        "{\"debug\": TEXT}\tA line that the plug-in wrote to Qt's debug stream.\n"
        "{\"result\": COMMAND, ...}\tWhat a command that prints something found.\n"
        "{\"error\": TEXT, \"line\": N}\tA script line that could not run; the session "
        "goes on, and the exit status will be 1.\n"
        "\n"
        "A script holds one command per line; blank lines and lines that start with # are "
        "skipped. Words are separated by blanks; a word in double quotes may hold blanks, "
        "with \\\" and \\\\ as escapes. Pages are counted as the plug-in's operation "
        "counts them. The commands:\n"
        "\n"
        "import PATH\tParses a file and stores its book and page records.\n"
        "cover BOOK [FILE]\tAsks the parser for the cover; writes it to FILE if given.\n"
        "open BOOK [TYPE]\tOpens the book in a new reading view; TYPE 2 opens at the saved "
        "position, 0 (the default) and 1 at the first page.\n"
        "open-page PAGEID\tOpens a new view at a stored page record.\n"
        "open-bookmark PAGEID EXTRA\tOpens a new view at a page record with a bookmark "
        "whose extra data is EXTRA.\n"
        "open-image FILE\tShows an image file's bytes in a new view.\n"
        "close\tDeletes the view.\n"
        "next, prev\tTurns a page forward or back.\n"
        "goto N\tGoes to page N, counted from 1.\n"
        "chapter N, page N\tGoes to page N, counted from 0.\n"
        "key NAME\tPresses a key: Left, Right, Up, Down, PageUp, PageDown or any Qt key "
        "name.\n"
        "tap [STATE]\tA tap gesture: started, updated or finished (the default).\n"
        "swipe DIRECTION\tA swipe gesture: left, right, up, down, or two joined by +, such "
        "as up+left.\n"
        "drag DX DY\tA drag gesture that moves the finger by DX, DY pixels.\n"
        "pinch SCALE\tA pinch gesture of that scale factor.\n"
        "zoom FACTOR\tSets the view's zoom factor.\n"
        "fit-width, fit-height, rotate\tThe view's fitting and turning operations.\n"
        "orientation N\tSets the orientation: 0 or 2 upright, 1 or 3 landscape.\n"
        "paint\tRepaints the view at once.\n"
        "screenshot FILE\tWrites the view as last painted to an image file.\n"
        "save\tSaves the reading position.\n"
        "font\tTells the view that the font settings changed.\n"
        "dogear add, dogear remove\tDog-ears the page shown, or takes its dog ear off.\n"
        "dogear remove-record EXTRA\tRemoves the stored dog ear with that extra data.\n"
        "dogear check [true]\tAsks whether the page shown is dog-eared.\n"
        "dogear loaded\tAsks whether the dog ears are loaded.\n"
        "dogear key EXTRA\tAsks for the page of the dog ear with that extra data.\n"
        "dogear list\tPrints the open book's dog ears as the library holds them.\n"
        "state\tPrints the reading state: progress, zoom, orientation and the stored book "
        "record.\n"
        "wait [MS]\tRuns the event loop for MS milliseconds (default 0: the pending events "
        "only).");
}

QList<CommandOption> SessionCommand::options() const
{
    return { SessionView::sizeOption(
        QStringLiteral("The emulated screen in pixels (default: 1072x1448, the device's).")) };
}

QVector<Command::Argument> SessionCommand::arguments() const
{
    return { { QStringLiteral("SCRIPT"),
        QStringLiteral("The script file; standard input when absent or \"-\"."),
        QStringLiteral("[SCRIPT]") } };
}

QVector<Command::Example> SessionCommand::examples() const
{
    return {
        { QStringLiteral("printf 'import a.cbz\\nopen a.cbz\\nnext\\nsave\\nstate\\n' | "
                         "tamber session"),
            QStringLiteral("Imports a comic, opens it, turns a page, saves the position and "
                           "prints the state, with every signal and host call on the way.") },
        { QStringLiteral("tamber session --size 758x1024 reading.script > trace.jsonl"),
            QStringLiteral("Plays a script file on a smaller screen and keeps the trace.") },
    };
}

Command::Needs SessionCommand::needs() const
{
    Needs needs;
    needs.maximumArguments = 1;
    needs.argumentsError = QStringLiteral("session takes one SCRIPT");
    needs.library = Needs::LibraryMadeIfMissing;
    needs.plugin = true;
    return needs;
}

int SessionCommand::run(Application&, const Invocation& call) const
{
    const QStringList& arguments = call.arguments;
    QSize screen = SessionView::defaultScreen();
    SessionView::parseSize(call.options.value(QStringLiteral("size")), &screen);

    const bool fromFile = !arguments.isEmpty() && arguments.first() != QLatin1String("-");
    QString script;
    if (fromFile) {
        QFile file(arguments.first());
        if (!file.open(QIODevice::ReadOnly)) {
            Application::warn(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
            return Application::Failed;
        }
        // With its length: a NUL byte must not end the script.
        const QByteArray bytes = file.readAll();
        script = QString::fromUtf8(bytes.constData(), bytes.size());
    }
    registerGestureRecognizers();
    Session session(call.loader->plugin(), screen);
    if (fromFile) {
        for (const ScriptLine& line : SessionScript::parse(script))
            session.run(line);
    } else {
        // Line by line as it comes, so that a person can type a session.
        std::string text;
        for (int number = 1; std::getline(std::cin, text); ++number) {
            for (ScriptLine line : SessionScript::parse(QString::fromStdString(text))) {
                line.number = number;
                session.run(line);
            }
        }
    }
    return session.failed() ? Application::Failed : Application::Success;
}
