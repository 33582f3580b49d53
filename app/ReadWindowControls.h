// SPDX-License-Identifier: MIT
#ifndef READWINDOWCONTROLS_H
#define READWINDOWCONTROLS_H

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QSwipeGesture>

class QAction;
class QMenu;
class QWidget;
class SwipeGesture;
class TapGesture;

// The host's rules for the taps and swipes that a reading view hands back: a
// tap in the left third of the screen goes back a page, in the right third
// forward, in the middle it opens a small menu; a swipe to the left goes
// forward, to the right back.
class ReadWindowControls : public QObject
{
    Q_OBJECT

public:
    enum Action { NoAction, PreviousPage, NextPage, OpenMenu };

    // screen is the widget that stands for the device's screen; the menu
    // belongs to window.
    ReadWindowControls(QWidget* view, QWidget* screen, QWidget* window);

    // position is in the screen's coordinates.
    static Action tapAction(const QPoint& position, int screenWidth);
    // Directions as the view hands them over, already turned for landscape.
    static Action swipeAction(
        QSwipeGesture::SwipeDirection horizontal, QSwipeGesture::SwipeDirection vertical);

signals:
    // The menu's "Close".
    void closeRequested();

public slots:
    void tap(TapGesture* tap);
    void swipe(SwipeGesture* swipe);

private slots:
    void setDogEar(bool on);
    void fitWidth();
    void fitHeight();

private:
    void act(Action action, const QPoint& globalPosition);
    bool hasDogEar() const;

    QPointer<QWidget> m_view;
    QWidget* m_screen;
    QMenu* m_menu;
    QAction* m_dogEar;
};

#endif
