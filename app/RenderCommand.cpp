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
            QStringLiteral("The page, counted from 1 (default: 1)."), QStringLiteral("N")),
        CommandOption(QStringLiteral("size"),
            QStringLiteral("The emulated screen in pixels, each side from 1 to %1 (default: "
                           "1072x1448, the device's).")
                .arg(SessionView::maximumSide),
            QStringLiteral("WxH")),
        CommandOption(QStringLiteral("zoom"),
            QStringLiteral("The zoom factor, from 1 to 3: 1 fits the page to the screen, 2 "
                           "shows its top left part at twice that size (default: 1)."),
            QStringLiteral("Z")),
        CommandOption(QStringLiteral("orientation"),
            QStringLiteral("0 or 2 upright, 1 or 3 turned to landscape (default: as the page "
                           "decides)."),
            QStringLiteral("O")),
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

int RenderCommand::run(Application& app, const CommandLine& parser) const
{
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 1)
        return Application::usageError(QStringLiteral("render needs one BOOK"), this);
    const QString output = parser.value(QStringLiteral("output"));
    if (output.isEmpty())
        return Application::usageError(QStringLiteral("render needs -o FILE"), this);

    bool ok = true;
    const int page = parser.isSet(QStringLiteral("page"))
        ? parser.value(QStringLiteral("page")).toInt(&ok)
        : 1;
    if (!ok || page < 1)
        return Application::usageError(QStringLiteral("--page needs a number from 1"), this);
    QSize screen = SessionView::defaultScreen();
    if (parser.isSet(QStringLiteral("size"))
        && !SessionView::parseSize(parser.value(QStringLiteral("size")), &screen))
        return Application::usageError(
            QStringLiteral("--size needs %1").arg(SessionView::sizeHint()), this);
    const bool zoomSet = parser.isSet(QStringLiteral("zoom"));
    const double zoom = zoomSet ? parser.value(QStringLiteral("zoom")).toDouble(&ok) : 1.0;
    if (!ok || !std::isfinite(zoom) || zoom < minimumZoom || zoom > maximumZoom)
        return Application::usageError(QStringLiteral("--zoom needs a number from %1 to %2")
                                           .arg(minimumZoom, 0, 'f', 1)
                                           .arg(maximumZoom, 0, 'f', 1),
            this);
    const bool orientationSet = parser.isSet(QStringLiteral("orientation"));
    const int orientation
        = orientationSet ? parser.value(QStringLiteral("orientation")).toInt(&ok) : 0;
    if (!ok || orientation < 0 || orientation > 3)
        return Application::usageError(QStringLiteral("--orientation needs 0, 1, 2 or 3"), this);

    const Application::OpenedBook opened = app.openBook(arguments.first());
    if (opened.status != Application::Success)
        return opened.status;
    const QString& id = opened.id;
    const int pageCount = Library::pages(id).size();
    if (page > pageCount) {
        Application::warn(
            QStringLiteral("%1: no page %2; the book has %3").arg(id).arg(page).arg(pageCount));
        return Application::Failed;
    }

    registerGestureRecognizers();
    PluginState state;
    SessionView view(opened.loader->plugin(), &state, screen);
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
