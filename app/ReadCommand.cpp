// SPDX-License-Identifier: MIT
#include "ReadCommand.h"

#include "Application.h"
#include "BookArgument.h"
#include "Display.h"
#include "GestureRegistration.h"
#include "Library.h"
#include "PluginLoader.h"
#include "ReadWindow.h"
#include "SessionView.h"

#include <QApplication>
#include "CommandLine.h"

namespace {

const QSize deviceScreen(1072, 1448);

// The device's screen, shrunk to fit the display when that is smaller.
QSize defaultScreen()
{
    const QSize available = Display::availableSize();
    if (!available.isValid())
        return deviceScreen;
    // Leaves room for the window's frame.
    const QSize room = available * 0.9;
    if (room.width() >= deviceScreen.width() && room.height() >= deviceScreen.height())
        return deviceScreen;
    QSize fitted = deviceScreen;
    fitted.scale(room, Qt::KeepAspectRatio);
    return fitted;
}

} // namespace

QString ReadCommand::name() const
{
    return QStringLiteral("read");
}

QString ReadCommand::synopsis() const
{
    return QStringLiteral("BOOK [--size WxH]");
}

QString ReadCommand::summary() const
{
    return QStringLiteral("Opens a book in a window at its saved position, to read");
}

bool ReadCommand::needsWindow() const
{
    return true;
}

QString ReadCommand::description() const
{
    return QStringLiteral(
        "Opens the book at its saved reading position in a window that holds the reading "
        "view the way the device's main window does. The window's title shows the book's "
        "title and the page number; a header or a status line is drawn only when the view "
        "asks for one, and this view asks for neither. It needs a display (DISPLAY or "
        "WAYLAND_DISPLAY); xvfb-run provides one without a screen.\n"
        "\n"
        "The mouse works as a finger does on the device:\n"
        "\n"
        "click in the left third\tGoes back a page.\n"
        "click in the right third\tGoes forward a page.\n"
        "click in the middle\tOpens a menu: dog ear on or off, fit width, fit height, "
        "close.\n"
        "quick flick\tA swipe: to the left goes forward, to the right back (only when "
        "not zoomed).\n"
        "press and move\tPans a zoomed page; dragged far past the page's edge, turns the "
        "page.\n"
        "Ctrl+wheel\tZooms in or out, as a pinch does.\n"
        "Left, Page Up\tGoes back a page.\n"
        "Right, Page Down\tGoes forward a page.\n"
        "Escape\tSaves the reading position and quits.\n"
        "\n"
        "Closing the window saves the reading position too, and so does reading past the "
        "last page, which marks the book finished and closes the window. If a page cannot "
        "be decoded the view closes, the exit status is 1 and the reading position stays "
        "as it was; a book that showed no page keeps its reading status too.");
}

QList<CommandOption> ReadCommand::options() const
{
    return { SessionView::sizeOption(
        QStringLiteral("The emulated screen in pixels (default: %1x%2, the device's, shrunk "
                       "to fit the display).")
            .arg(deviceScreen.width())
            .arg(deviceScreen.height())) };
}

QVector<Command::Argument> ReadCommand::arguments() const
{
    return { BookArgument::help() };
}

QVector<Command::Example> ReadCommand::examples() const
{
    return {
        { QStringLiteral("tamber read ~/Comics/Issue\\ 1.cbz"),
            QStringLiteral("Reads the book from where it was left.") },
        { QStringLiteral("xvfb-run tamber read ~/Comics/Issue\\ 1.cbz --size 536x724"),
            QStringLiteral("Reads on a virtual display, at half the device's size.") },
    };
}

Command::Needs ReadCommand::needs() const
{
    return Needs::oneBook(name(), true);
}

int ReadCommand::run(Application&, const Invocation& call) const
{
    QSize screen = defaultScreen();
    SessionView::parseSize(call.options.value(QStringLiteral("size")), &screen);
    const QString problem = Display::windowProblem();
    if (!problem.isEmpty()) {
        Application::warn(QStringLiteral("read opens a window, and %1").arg(problem));
        return Application::UsageError;
    }
    const QString& id = call.book;

    // Before the view exists: it grabs the recognizers' gesture types.
    registerGestureRecognizers();
    ReadWindow window(call.loader->plugin(), screen);
    if (!window.open(Library::book(id)))
        return Application::Failed;
    window.show();
    window.activateWindow();
    window.view()->setFocus(Qt::OtherFocusReason);
    QApplication::exec();
    return window.exitStatus();
}
