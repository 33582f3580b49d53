// SPDX-License-Identifier: MIT
#ifndef SESSIONVIEW_H
#define SESSIONVIEW_H

#include "CommandLine.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QSwipeGesture>

class ComicsReader;
class GuidedReadingMixin;
class ImageReaderDelegate;
class PluginInterface;
class QGesture;
class QWidget;
struct PluginState;

// The host's reading container with one reading view in it, held the way the
// device's main window holds it: the plug-in is given a child widget of the
// container, the view takes the container as its parent and is resized to the
// emulated screen. The container is shown, so that a repaint paints at once.
class SessionView : public QObject
{
    Q_OBJECT

public:
    SessionView(PluginInterface* plugin, PluginState* state, const QSize& screen,
        QObject* parent = nullptr);
    ~SessionView() override;

    static QSize defaultScreen();
    // The largest side of an emulated screen: a page scaled to more would take
    // gigabytes and minutes to paint.
    static const int maximumSide = 16384;
    // "WxH" with both sides from 1 to maximumSide.
    static bool parseSize(const QString& text, QSize* size);
    // --size WxH, which takes what parseSize does.
    static CommandOption sizeOption(const QString& description);
    // In the format that the file's suffix names, PNG when it names none.
    static bool writeImage(const QImage& image, const QString& fileName, QString* error);
    // Runs the event loop for that long; 0 handles the pending events only.
    // Deletions scheduled with deleteLater() happen in both cases.
    static void wait(int milliseconds);

    // Closes any open view, then asks the plug-in for a new one.
    bool open();
    // The host deletes the container, and the view with it.
    void close();
    // Closes the view if the plug-in has asked the main window to let go of it.
    // Done between commands, so that no call of the view is running.
    void closeIfCleared();

    bool isOpen() const;
    // Whether the last view went because it deleted its own container.
    bool closedByView() const;
    QWidget* view() const;

    // The view's host interfaces, through its meta-object; null when it has none.
    ImageReaderDelegate* imageReader() const;
    GuidedReadingMixin* guidedReading() const;
    ComicsReader* reader() const;

    // Hand-made gestures, delivered as the device delivers recognized ones: in
    // a gesture event sent through the application to the view.
    void sendTap(Qt::GestureState state);
    void sendSwipe(
        QSwipeGesture::SwipeDirection horizontal, QSwipeGesture::SwipeDirection vertical);
    void sendDrag(const QPoint& delta);
    void sendPinch(qreal scale);
    void sendKey(int key);

    void paint();
    // The view as last painted, read back from the container's window; null
    // before the view's first paint.
    QImage screenshot() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void cleared();
    void containerDestroyed();

private:
    void sendGesture(QGesture* gesture);

    PluginInterface* m_plugin;
    PluginState* m_state;
    QSize m_screen;
    QPointer<QWidget> m_container;
    QPointer<QWidget> m_view;
    bool m_closing = false;
    bool m_closedByView = false;
    bool m_clearRequested = false;
    bool m_painted = false;
};

#endif
