// SPDX-License-Identifier: MIT
#include "SessionView.h"

#include "ComicsReader.h"
#include "Display.h"
#include "DragGesture.h"
#include "GestureRecognizers.h"
#include "GuidedReadingMixin.h"
#include "ImageReaderDelegate.h"
#include "MainWindowController.h"
#include "PinchGesture.h"
#include "PluginInterface.h"
#include "PluginState.h"
#include "SwipeGesture.h"
#include "TapGesture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QGestureEvent>
#include <QImageWriter>
#include <QKeyEvent>
#include <QTimer>
#include <QWidget>

namespace {

// Runs the event loop until the window may be painted: Qt paints only
// windows that are on the screen.
void waitUntilShown(QWidget* window)
{
    QElapsedTimer timer;
    timer.start();
    while (!Display::isShown(window) && timer.elapsed() < 5000) {
        QEventLoop loop;
        QTimer::singleShot(5, &loop, SLOT(quit()));
        loop.exec();
    }
}

} // namespace

SessionView::SessionView(
    PluginInterface* plugin, PluginState* state, const QSize& screen, QObject* parent)
    : QObject(parent)
    , m_plugin(plugin)
    , m_state(state)
    , m_screen(screen)
{
    connect(MainWindowController::sharedInstance(), SIGNAL(cleared()), this, SLOT(cleared()));
}

SessionView::~SessionView()
{
    close();
}

QSize SessionView::defaultScreen()
{
    return QSize(1072, 1448);
}

bool SessionView::parseSize(const QString& text, QSize* size)
{
    const QStringList sides = text.split(QLatin1Char('x'));
    if (sides.size() != 2)
        return false;
    bool widthOk = false;
    bool heightOk = false;
    const QSize parsed(sides.at(0).toInt(&widthOk), sides.at(1).toInt(&heightOk));
    if (!widthOk || !heightOk || parsed.width() < 1 || parsed.height() < 1
        || parsed.width() > maximumSide || parsed.height() > maximumSide)
        return false;
    *size = parsed;
    return true;
}

CommandOption SessionView::sizeOption(const QString& description)
{
    return CommandOption(QStringLiteral("size"), description, QStringLiteral("WxH"))
        .accepting(
            [](const QString& text) {
                QSize size;
                return parseSize(text, &size);
            },
            QStringLiteral("bad size \"%1\": expected WxH with each side from 1 to ")
                + QString::number(maximumSide) + QStringLiteral(" pixels, such as 1072x1448"));
}

bool SessionView::writeImage(const QImage& image, const QString& fileName, QString* error)
{
    const QByteArray suffix = QFileInfo(fileName).suffix().toLower().toLatin1();
    const QByteArray format
        = QImageWriter::supportedImageFormats().contains(suffix) ? suffix : QByteArray("png");
    QImageWriter writer(fileName, format);
    // Fast compression: the default level costs twice the time for 2 % less file.
    if (format == "png")
        writer.setQuality(80);
    if (writer.write(image))
        return true;
    *error = QStringLiteral("%1: %2").arg(fileName, writer.errorString());
    return false;
}

void SessionView::wait(int milliseconds)
{
    if (milliseconds > 0) {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, SLOT(quit()));
        loop.exec();
    }
    QCoreApplication::processEvents();
    // Outside any event loop, Qt leaves these to be asked for.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool SessionView::open()
{
    close();
    m_closedByView = false;
    m_clearRequested = false;
    m_painted = false;

    auto* container = new QWidget;
    container->setWindowTitle(QStringLiteral("tamber"));
    container->resize(m_screen);
    auto* handle = new QWidget(container);
    handle->hide();
    container->show();
    waitUntilShown(container);
    m_container = container;
    connect(container, SIGNAL(destroyed()), this, SLOT(containerDestroyed()));

    QWidget* view = m_plugin->reader(m_state, handle);
    if (!view) {
        close();
        return false;
    }
    m_view = view;
    view->resize(m_screen);
    view->installEventFilter(this);
    view->show();
    return true;
}

void SessionView::close()
{
    if (!m_container)
        return;
    m_closing = true;
    delete m_container;
    m_closing = false;
}

void SessionView::closeIfCleared()
{
    if (m_clearRequested)
        close();
    m_clearRequested = false;
}

bool SessionView::isOpen() const
{
    return m_view;
}

bool SessionView::closedByView() const
{
    return m_closedByView;
}

QWidget* SessionView::view() const
{
    return m_view;
}

ImageReaderDelegate* SessionView::imageReader() const
{
    return m_view ? static_cast<ImageReaderDelegate*>(m_view->qt_metacast("ImageReaderDelegate"))
                  : nullptr;
}

GuidedReadingMixin* SessionView::guidedReading() const
{
    return m_view ? static_cast<GuidedReadingMixin*>(m_view->qt_metacast("GuidedReadingMixin"))
                  : nullptr;
}

ComicsReader* SessionView::reader() const
{
    return m_view ? static_cast<ComicsReader*>(m_view->qt_metacast("ComicsReader")) : nullptr;
}

void SessionView::sendGesture(QGesture* gesture)
{
    QGestureEvent event({ gesture });
    QCoreApplication::sendEvent(m_view, &event);
}

void SessionView::sendTap(Qt::GestureState state)
{
    TapGesture tap;
    tap.setGestureState(state);
    tap.setPosition(QPointF(m_screen.width() / 2.0, m_screen.height() / 2.0));
    sendGesture(&tap);
}

void SessionView::sendSwipe(
    QSwipeGesture::SwipeDirection horizontal, QSwipeGesture::SwipeDirection vertical)
{
    SwipeGesture swipe;
    swipe.setGestureState(Qt::GestureFinished);
    swipe.setHorizontalDirection(horizontal);
    swipe.setVerticalDirection(vertical);
    sendGesture(&swipe);
}

void SessionView::sendDrag(const QPoint& delta)
{
    // The whole movement in one report, so that the view sees one offset.
    DragGesture drag;
    drag.setGestureState(Qt::GestureFinished);
    drag.setDelta(delta);
    drag.setPosition(QPoint(m_screen.width() / 2, m_screen.height() / 2) + delta);
    sendGesture(&drag);
}

void SessionView::sendPinch(qreal scale)
{
    PinchGesture pinch;
    pinch.setGestureState(Qt::GestureFinished);
    pinch.setScaleFactor(scale);
    pinch.setCenterPoint(QPointF(m_screen.width() / 2.0, m_screen.height() / 2.0));
    sendGesture(&pinch);
}

void SessionView::sendKey(int key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view, &press);
}

void SessionView::paint()
{
    Display::paint(m_view);
}

QImage SessionView::screenshot() const
{
    if (!m_view || !m_painted)
        return QImage();
    return Display::paintedImage(m_view);
}

bool SessionView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_view && event->type() == QEvent::Paint)
        m_painted = true;
    return QObject::eventFilter(watched, event);
}

void SessionView::cleared()
{
    if (m_view)
        m_clearRequested = true;
}

void SessionView::containerDestroyed()
{
    m_closedByView = !m_closing;
    // The host's flag for an open reader; the view raises it, the host lowers it.
    if (m_state)
        m_state->readerOpen = 0;
}
