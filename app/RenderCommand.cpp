// SPDX-License-Identifier: MIT
#include "RenderCommand.h"

#include "Application.h"
#include "BookArgument.h"
#include "FileProblem.h"
#include "GestureRegistration.h"
#include "ImageReaderDelegate.h"
#include "Library.h"
#include "PluginLoader.h"
#include "PluginState.h"
#include "SessionView.h"
#include "ZoomController.h"

#include "CommandLine.h"
#include <QCoreApplication>
#include <QWidget>

#include <cmath>

namespace {

// The reading view's zoom controller takes factors in this range and bounds
// any other to it.
const double minimumZoom = 1.0;
const double maximumZoom = 3.0;

// A page that cannot be decoded makes the view delete its container.
bool paintSurvives(SessionView& view)
{
    view.paint();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return view.isOpen();
}

} // namespace

QString RenderCommand::name() const
{
    return QStringLiteral("render");
}

QString RenderCommand::synopsis() const
{
    return QStringLiteral("BOOK [--page N] [OPTIONS] -o FILE");
}

QString RenderCommand::summary() const
{
    return QStringLiteral("Writes what the reading view paints for a page, as an image file");
}

QString RenderCommand::description() const
{
    return QStringLiteral(
        "Opens the book in a new reading view of the emulated screen's size, without a "
        "window, goes to page N, applies the zoom, paints once and writes what the view "
        "painted: the page scaled to fit, centred on white. The format follows FILE's "
        "suffix when Qt can write it, else PNG. Nothing is saved to the library: the "
        "reading position stays as it was.\n"
        "\n"
        "Unless --orientation says otherwise, the page decides the orientation: a page "
        "wider than it is high turns the view to landscape. A page that cannot be "
        "decoded makes the exit status 1, and so does a page beyond the book's last.");
}

QList<CommandOption> RenderCommand::options() const
{
    return {
        CommandOption(QStringLiteral("page"),
            QStringLiteral("The page, counted from 1 (default: 1)."), QStringLiteral("N"))
            .accepting([](const QString& text) { return text.toInt() >= 1; },
                QStringLiteral("--page needs a number from 1")),
        SessionView::sizeOption(
            QStringLiteral("The emulated screen in pixels, each side from 1 to %1 (default: "
                           "1072x1448, the device's).")
                .arg(SessionView::maximumSide)),
        CommandOption(QStringLiteral("zoom"),
            QStringLiteral("The zoom factor, from 1 to 3: 1 fits the page to the screen, 2 "
                           "shows its top left part at twice that size (default: 1)."),
            QStringLiteral("Z"))
            .accepting(
                [](const QString& text) {
                    bool ok = false;
                    const double zoom = text.toDouble(&ok);
                    return ok && std::isfinite(zoom) && zoom >= minimumZoom && zoom <= maximumZoom;
                },
                QStringLiteral("--zoom needs a number from %1 to %2")
                    .arg(minimumZoom, 0, 'f', 1)
                    .arg(maximumZoom, 0, 'f', 1)),
        CommandOption(QStringLiteral("orientation"),
            QStringLiteral("0 or 2 upright, 1 or 3 turned to landscape (default: as the page "
                           "decides)."),
            QStringLiteral("O"))
            .accepting(
                [](const QString& text) {
                    bool ok = false;
                    const int orientation = text.toInt(&ok);
                    return ok && orientation >= 0 && orientation <= 3;
                },
                QStringLiteral("--orientation needs 0, 1, 2 or 3")),
        CommandOption({ QStringLiteral("o"), QStringLiteral("output") },
            QStringLiteral("The image file to write (required)."), QStringLiteral("FILE")),
    };
}

QVector<Command::Argument> RenderCommand::arguments() const
{
    return { BookArgument::help() };
}

QVector<Command::Example> RenderCommand::examples() const
{
    return {
        { QStringLiteral("tamber render ~/Comics/Issue\\ 1.cbz --page 3 -o page3.png"),
            QStringLiteral("Writes page 3 as the device's screen shows it.") },
        { QStringLiteral("tamber render ~/Comics/Issue\\ 1.cbz --size 600x800 --zoom 2 "
                         "-o detail.png"),
            QStringLiteral("Writes the top left part of page 1 at twice the size, on a "
                           "smaller screen.") },
    };
}

Command::Needs RenderCommand::needs() const
{
    Needs needs = Needs::oneBook(name(), true);
    needs.requiredOption = QStringLiteral("output");
    return needs;
}

int RenderCommand::run(Application&, const Invocation& call) const
{
    // The options' values are checked as the command line is parsed.
    const CommandLine& options = call.options;
    const QString output = options.value(QStringLiteral("output"));
    const int page = options.isSet(QStringLiteral("page"))
        ? options.value(QStringLiteral("page")).toInt()
        : 1;
    QSize screen = SessionView::defaultScreen();
    SessionView::parseSize(options.value(QStringLiteral("size")), &screen);
    const bool zoomSet = options.isSet(QStringLiteral("zoom"));
    const double zoom = zoomSet ? options.value(QStringLiteral("zoom")).toDouble() : 1.0;
    const bool orientationSet = options.isSet(QStringLiteral("orientation"));
    const int orientation = options.value(QStringLiteral("orientation")).toInt();
    const QString& id = call.book;
    const int pageCount = Library::pages(id).size();
    if (page > pageCount) {
        Application::warn(
            QStringLiteral("%1: no page %2; the book has %3").arg(id).arg(page).arg(pageCount));
        return Application::Failed;
    }

    registerGestureRecognizers();
    PluginState state;
    SessionView view(call.loader->plugin(), &state, screen);
    if (!view.open()) {
        Application::warn(QStringLiteral("the plug-in gave no reading view"));
        return Application::Failed;
    }
    ImageReaderDelegate* reader = view.imageReader();
    if (orientationSet && reader)
        reader->setOrientation(ScreenOrientation(orientation));
    // Opened at the page, so that only that page is decoded: it decides the
    // orientation unless --orientation did.
    QMetaObject::invokeMethod(view.view(), "renderVolume", Qt::DirectConnection,
        Q_ARG(Volume, Library::book(id)), Q_ARG(ReadingNavigationType, ReadingNavigationDefault));
    QMetaObject::invokeMethod(view.view(), "goToPage", Qt::DirectConnection, Q_ARG(int, page));
    // A new factor repaints at once.
    if (zoomSet && reader && reader->zoomController())
        reader->zoomController()->setZoomFactor(zoom);
    if (!paintSurvives(view)) {
        QString cause = FileProblem::of(id);
        if (cause.isEmpty())
            cause = QStringLiteral("its picture cannot be decoded");
        Application::warn(
            QStringLiteral("%1: page %2 cannot be painted (%3)")
                .arg(id, QString::number(page), cause));
        return Application::Failed;
    }

    QString error;
    if (!SessionView::writeImage(view.screenshot(), output, &error)) {
        Application::warn(error);
        return Application::Failed;
    }
    return Application::Success;
}
