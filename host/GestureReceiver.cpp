// SPDX-License-Identifier: MIT
#include "GestureReceiver.h"

#include "DragGesture.h"
#include "GestureDelegate.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"
#include "TapGesture.h"
#include "TwoFingerScrollGesture.h"

#include <QGestureEvent>
#include <QPanGesture>

namespace {

// A swipe is known only once the finger lifts: Qt reports a recognized swipe
// as started and then finished, and the delegate hears of it once. Swipes made
// by hand, in no state, reach it too; canceled ones never do.
bool isOver(const QGesture* swipe)
{
    return swipe->state() == Qt::GestureFinished || swipe->state() == Qt::NoGesture;
}

} // namespace

GestureReceiver::GestureReceiver()
    : m_delegate(nullptr)
{
}

GestureReceiver::~GestureReceiver() = default;

bool GestureReceiver::event(QEvent* event)
{
    if (event->type() == QEvent::Gesture)
        return gestureEvent(static_cast<QGestureEvent*>(event));
    return false;
}

bool GestureReceiver::gestureEvent(QGestureEvent* event)
{
    return sendGestureToDelegate(event, m_delegate);
}

bool GestureReceiver::sendGestureToDelegate(QGestureEvent* event, GestureDelegate* delegate)
{
    if (!delegate)
        return false;
    bool handled = false;
    // Gestures are told apart by class, so that gestures made by hand reach the
    // same handlers as those of the recognizers.
    for (QGesture* gesture : event->gestures()) {
        bool accepted = false;
        if (auto* tap = qobject_cast<TapGesture*>(gesture))
            accepted = delegate->tapGesture(this, tap);
        else if (auto* swipe = qobject_cast<SwipeGesture*>(gesture))
            accepted = isOver(swipe) ? delegate->swipeGesture(this, swipe) : true;
        else if (auto* drag = qobject_cast<DragGesture*>(gesture))
            accepted = delegate->dragGesture(this, drag);
        else if (auto* pinch = qobject_cast<PinchGesture*>(gesture))
            accepted = delegate->pinchGesture(this, pinch);
        else if (auto* scroll = qobject_cast<TwoFingerScrollGesture*>(gesture))
            accepted = delegate->twoFingerScrollGesture(this, scroll);
        else if (auto* pan = qobject_cast<QPanGesture*>(gesture))
            accepted = delegate->panGesture(this, pan);
        event->setAccepted(gesture, accepted);
        handled = handled || accepted;
    }
    return handled;
}

void GestureReceiver::setGestureDelegate(GestureDelegate* delegate)
{
    m_delegate = delegate;
}

GestureDelegate* GestureReceiver::gestureDelegate() const
{
    return m_delegate;
}
