// SPDX-License-Identifier: MIT
// ComicsReader: touch, gestures and keys.

#include "ComicsReader.h"

#include "DragGesture.h"
#include "PinchGesture.h"
#include "ZoomController.h"

#include <QEvent>
#include <QGestureEvent>
#include <QKeyEvent>

bool ComicsReader::event(QEvent* event)
{
    switch (static_cast<int>(event->type())) {
    // Raw touch is the host's recognizers' business; 209 (TouchCancel here) too.
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QtCompat::TouchCancel:
        return true;
    case QEvent::Gesture:
        return gestureEvent(static_cast<QGestureEvent*>(event));
    default:
        return QWidget::event(event);
    }
}

void ComicsReader::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_PageUp:
        goToPrevPage();
        break;
    case Qt::Key_Right:
    case Qt::Key_PageDown:
        goToNextPage();
        break;
    default:
        QWidget::keyPressEvent(event);
        break;
    }
}

bool ComicsReader::tapGesture(GestureReceiver*, TapGesture* gesture)
{
    if (gesture->state() == Qt::GestureFinished)
        emit processTap(gesture);
    return true;
}

bool ComicsReader::swipeGesture(GestureReceiver*, SwipeGesture* gesture)
{
    // Exactly 1.0 on purpose: any zoom at all makes the swipe a no-op.
    if (zoomControl->currentZoomFactor() == 1.0) {
        rotateSwipeIfLandscape(gesture);
        emit processSwipe(gesture);
    }
    return true;
}

bool ComicsReader::dragGesture(GestureReceiver*, DragGesture* gesture)
{
    const double zoom = zoomControl->currentZoomFactor();
    if (zoom != 1.0)
        processDragGesture(gesture, zoom);
    return true;
}

bool ComicsReader::pinchGesture(GestureReceiver*, PinchGesture* gesture)
{
    processPinchGesture(gesture);
    return true;
}

void ComicsReader::rotateSwipeIfLandscape(SwipeGesture* swipe)
{
    if (!isLandscape())
        return;
    // Vertical first, so a diagonal swipe becomes purely horizontal.
    if (swipe->verticalDirection() == QSwipeGesture::Up) {
        swipe->setHorizontalDirection(QSwipeGesture::Right);
        swipe->setVerticalDirection(QSwipeGesture::NoDirection);
    } else if (swipe->verticalDirection() == QSwipeGesture::Down) {
        swipe->setHorizontalDirection(QSwipeGesture::Left);
        swipe->setVerticalDirection(QSwipeGesture::NoDirection);
    } else if (swipe->horizontalDirection() == QSwipeGesture::Left) {
        swipe->setVerticalDirection(QSwipeGesture::Up);
        swipe->setHorizontalDirection(QSwipeGesture::NoDirection);
    } else if (swipe->horizontalDirection() == QSwipeGesture::Right) {
        swipe->setVerticalDirection(QSwipeGesture::Down);
        swipe->setHorizontalDirection(QSwipeGesture::NoDirection);
    }
}
