// SPDX-License-Identifier: MIT
// The host's recognizers: one finger on a touch screen, or the left mouse
// button on a desktop, makes taps, swipes and drags; two fingers, or the wheel
// with Ctrl held, make pinches. Positions are screen coordinates and times are
// the events' own timestamps, so that the same events always give the same
// gestures.

#include "GestureRecognizers.h"

#include "DragGesture.h"
#include "GestureRegistration.h"
#include "HostCompat.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"
#include "TapGesture.h"

#include <QKeyEvent>
#include <QLineF>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWheelEvent>

#include <cmath>

// Filled when the host registers its recognizers at start-up.
Qt::GestureType TapGestureRecognizer::_gestureType = Qt::CustomGesture;
Qt::GestureType DragGestureRecognizer::_gestureType = Qt::CustomGesture;
Qt::GestureType SwipeGestureRecognizer::_gestureType = Qt::CustomGesture;
Qt::GestureType PinchGestureRecognizer::_gestureType = Qt::CustomGesture;

namespace {

using namespace GestureThresholds;

// One finger, as the one-finger recognizers see an input event.
struct Contact
{
    enum Phase { Other, Press, Move, Release, Cancel };
    Phase phase = Other;
    QPointF position;
    unsigned long time = 0;
};

Contact contact(Contact::Phase phase, const QPointF& position, unsigned long time)
{
    Contact result;
    result.phase = phase;
    result.position = position;
    result.time = time;
    return result;
}

Contact contactOf(const QEvent* event)
{
    switch (static_cast<int>(event->type())) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<const QMouseEvent*>(event);
        if (event->type() == QEvent::MouseMove) {
            if (!(mouse->buttons() & Qt::LeftButton))
                return Contact();
            return contact(Contact::Move, QPointF(mouse->globalPos()), HostCompat::eventTime(mouse));
        }
        if (mouse->button() != Qt::LeftButton)
            return Contact();
        return contact(
            event->type() == QEvent::MouseButtonPress ? Contact::Press : Contact::Release,
            QPointF(mouse->globalPos()), HostCompat::eventTime(mouse));
    }
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd: {
        const auto* touch = static_cast<const QTouchEvent*>(event);
        // A second finger makes the gesture a pinch.
        if (touch->touchPoints().size() != 1)
            return contact(Contact::Cancel, QPointF(), HostCompat::eventTime(touch));
        const Contact::Phase phase = event->type() == QEvent::TouchBegin ? Contact::Press
            : event->type() == QEvent::TouchEnd                          ? Contact::Release
                                                                         : Contact::Move;
        return contact(phase, touch->touchPoints().first().screenPos(), HostCompat::eventTime(touch));
    }
    case QtCompat::TouchCancel:
        return contact(Contact::Cancel, QPointF(), 0);
    default:
        return Contact();
    }
}

// Where a finger went down, and where it was last reported.
struct Track
{
    bool pressed = false;
    bool started = false;
    QPointF start;
    QPointF last;
    unsigned long startTime = 0;

    void press(const Contact& at)
    {
        *this = Track();
        pressed = true;
        start = last = at.position;
        startTime = at.time;
    }
};

// The gestures that the recognizers create carry their track with them, so
// that one recognizer serves every widget.
template<class G> class Tracked : public G
{
public:
    Track track;
};

double distance(const QPointF& from, const QPointF& to)
{
    return QLineF(from, to).length();
}

// The direction of a swipe along one axis: it counts when it is long enough
// and at least half the movement along the other axis.
bool swipesAlong(double along, double across)
{
    return std::abs(along) >= SwipeMinimumDistance && 2 * std::abs(along) >= std::abs(across);
}

template<class G> Tracked<G>* tracked(QGesture* gesture)
{
    return dynamic_cast<Tracked<G>*>(gesture);
}

// What every one-finger recognizer does with an event: a press starts the
// track and yields onPress; input that is no finger, or comes before any
// press, is ignored; a canceled contact cancels. Any other move or release is
// the gesture's own rule's to judge.
template<class G, class OnPress, class Rule>
QGestureRecognizer::Result followFinger(
    QGesture* gesture, QEvent* event, OnPress onPress, Rule rule)
{
    auto* finger = tracked<G>(gesture);
    const Contact input = contactOf(event);
    if (!finger || input.phase == Contact::Other)
        return QGestureRecognizer::Ignore;
    if (input.phase == Contact::Press) {
        finger->track.press(input);
        return onPress(*finger, input);
    }
    if (!finger->track.pressed)
        return QGestureRecognizer::Ignore;
    if (input.phase == Contact::Cancel)
        return QGestureRecognizer::CancelGesture;
    return rule(*finger, input);
}

// A press alone is no drag and no swipe yet.
template<class G> QGestureRecognizer::Result ignorePress(Tracked<G>&, const Contact&)
{
    return QGestureRecognizer::Ignore;
}

} // namespace

QGesture* TapGestureRecognizer::create(QObject*)
{
    return new Tracked<TapGesture>;
}

// Started on the press, updated while the finger stays put, finished on the
// release; canceled as soon as it moves too far.
QGestureRecognizer::Result TapGestureRecognizer::recognize(
    QGesture* gesture, QObject*, QEvent* event)
{
    return followFinger<TapGesture>(
        gesture, event,
        [](Tracked<TapGesture>& tap, const Contact& input) -> Result {
            tap.setPosition(input.position);
            return TriggerGesture;
        },
        [](Tracked<TapGesture>& tap, const Contact& input) -> Result {
            if (distance(tap.track.start, input.position) > TapMaximumMovement)
                return CancelGesture;
            return input.phase == Contact::Release ? FinishGesture : TriggerGesture;
        });
}

void TapGestureRecognizer::reset(QGesture* gesture)
{
    if (auto* tap = tracked<TapGesture>(gesture)) {
        tap->track = Track();
        tap->setPosition(QPointF());
    }
    QGestureRecognizer::reset(gesture);
}

QGesture* DragGestureRecognizer::create(QObject*)
{
    return new Tracked<DragGesture>;
}

// Starts once the finger has moved further than a tap may; every report then
// carries the movement since the previous one, the first the whole movement
// since the press.
QGestureRecognizer::Result DragGestureRecognizer::recognize(
    QGesture* gesture, QObject*, QEvent* event)
{
    return followFinger<DragGesture>(gesture, event, ignorePress<DragGesture>,
        [](Tracked<DragGesture>& drag, const Contact& input) -> Result {
            Track& track = drag.track;
            if (!track.started) {
                if (distance(track.start, input.position) <= TapMaximumMovement)
                    return input.phase == Contact::Release ? CancelGesture : Ignore;
                track.started = true;
            }
            drag.setDelta(input.position.toPoint() - track.last.toPoint());
            drag.setPosition(input.position.toPoint());
            track.last = input.position;
            return input.phase == Contact::Release ? FinishGesture : TriggerGesture;
        });
}

void DragGestureRecognizer::reset(QGesture* gesture)
{
    if (auto* drag = tracked<DragGesture>(gesture)) {
        drag->track = Track();
        drag->setDelta(QPoint());
        drag->setPosition(QPoint());
    }
    QGestureRecognizer::reset(gesture);
}

QGesture* SwipeGestureRecognizer::create(QObject*)
{
    return new Tracked<SwipeGesture>;
}

// Decided on the release: a flick far enough and quick enough. A diagonal
// flick carries both directions.
QGestureRecognizer::Result SwipeGestureRecognizer::recognize(
    QGesture* gesture, QObject*, QEvent* event)
{
    return followFinger<SwipeGesture>(gesture, event, ignorePress<SwipeGesture>,
        [](Tracked<SwipeGesture>& swipe, const Contact& input) -> Result {
            if (input.phase == Contact::Move)
                return Ignore;
            const Track& track = swipe.track;
            // Timestamps that run backwards (events made by hand) count as no time.
            const unsigned long duration
                = input.time >= track.startTime ? input.time - track.startTime : 0;
            const QPointF movement = input.position - track.start;
            const double dx = movement.x();
            const double dy = movement.y();
            if (duration > SwipeMaximumDuration)
                return CancelGesture;
            if (swipesAlong(dx, dy))
                swipe.setHorizontalDirection(dx < 0 ? QSwipeGesture::Left : QSwipeGesture::Right);
            if (swipesAlong(dy, dx))
                swipe.setVerticalDirection(dy < 0 ? QSwipeGesture::Up : QSwipeGesture::Down);
            const bool swiped = swipe.horizontalDirection() != QSwipeGesture::NoDirection
                || swipe.verticalDirection() != QSwipeGesture::NoDirection;
            return swiped ? FinishGesture : CancelGesture;
        });
}

void SwipeGestureRecognizer::reset(QGesture* gesture)
{
    if (auto* swipe = tracked<SwipeGesture>(gesture)) {
        swipe->track = Track();
        swipe->setHorizontalDirection(QSwipeGesture::NoDirection);
        swipe->setVerticalDirection(QSwipeGesture::NoDirection);
    }
    QGestureRecognizer::reset(gesture);
}

namespace {

// A pinch of two fingers, or of the wheel with Ctrl held.
struct PinchTrack
{
    enum Source { None, Fingers, Wheel };
    Source source = None;
    double lastDistance = 0;
};

class TrackedPinch : public PinchGesture
{
public:
    PinchTrack track;
};

// The fingers still on the screen.
QList<QTouchEvent::TouchPoint> fingersDown(const QTouchEvent* touch)
{
    QList<QTouchEvent::TouchPoint> down;
    for (const QTouchEvent::TouchPoint& point : touch->touchPoints()) {
        if (point.state() != Qt::TouchPointReleased)
            down << point;
    }
    return down;
}

// Input that ends a pinch of the wheel: Ctrl let go, or anything else done.
bool endsWheelPinch(const QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyRelease:
        return static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Control;
    case QEvent::Wheel:
        return !(static_cast<const QWheelEvent*>(event)->modifiers() & Qt::ControlModifier);
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
    case QEvent::FocusOut:
    case QEvent::Leave:
    case QEvent::Hide:
        return true;
    default:
        return false;
    }
}

QGestureRecognizer::Result recognizeFingers(TrackedPinch* pinch, const QTouchEvent* touch)
{
    PinchTrack& track = pinch->track;
    const QList<QTouchEvent::TouchPoint> down = fingersDown(touch);
    if (down.size() < 2) {
        if (track.source != PinchTrack::Fingers)
            return QGestureRecognizer::Ignore;
        pinch->setScaleFactor(1.0);
        return QGestureRecognizer::FinishGesture;
    }
    const QPointF first = down.at(0).screenPos();
    const QPointF second = down.at(1).screenPos();
    const double apart = distance(first, second);
    // The first report only says that two fingers are down.
    const bool starting = track.source != PinchTrack::Fingers;
    pinch->setScaleFactor(starting || track.lastDistance <= 0 ? 1.0 : apart / track.lastDistance);
    pinch->setCenterPoint((first + second) / 2);
    track.source = PinchTrack::Fingers;
    track.lastDistance = apart;
    return QGestureRecognizer::TriggerGesture;
}

QGestureRecognizer::Result recognizeWheel(TrackedPinch* pinch, const QWheelEvent* wheel)
{
    const double steps = double(HostCompat::wheelAngle(wheel)) / WheelStepAngle;
    if (steps == 0)
        return QGestureRecognizer::Ignore;
    pinch->setScaleFactor(std::pow(WheelStepScale, steps));
    pinch->setCenterPoint(HostCompat::wheelPosition(wheel));
    pinch->track.source = PinchTrack::Wheel;
    // The wheel zooms here and scrolls nothing else.
    return QGestureRecognizer::TriggerGesture | QGestureRecognizer::ConsumeEventHint;
}

} // namespace

QGesture* PinchGestureRecognizer::create(QObject*)
{
    return new TrackedPinch;
}

// Every report carries the scale since the previous one; the last reports 1.
QGestureRecognizer::Result PinchGestureRecognizer::recognize(
    QGesture* gesture, QObject*, QEvent* event)
{
    auto* pinch = dynamic_cast<TrackedPinch*>(gesture);
    if (!pinch)
        return Ignore;
    PinchTrack& track = pinch->track;

    if (track.source == PinchTrack::Wheel && endsWheelPinch(event)) {
        pinch->setScaleFactor(1.0);
        return FinishGesture;
    }
    switch (static_cast<int>(event->type())) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        if (track.source == PinchTrack::Wheel)
            return Ignore;
        return recognizeFingers(pinch, static_cast<const QTouchEvent*>(event));
    case QtCompat::TouchCancel:
        return track.source == PinchTrack::Fingers ? CancelGesture : Ignore;
    case QEvent::Wheel: {
        const auto* wheel = static_cast<const QWheelEvent*>(event);
        if (track.source == PinchTrack::Fingers || !(wheel->modifiers() & Qt::ControlModifier))
            return Ignore;
        return recognizeWheel(pinch, wheel);
    }
    default:
        return Ignore;
    }
}

void PinchGestureRecognizer::reset(QGesture* gesture)
{
    if (auto* pinch = dynamic_cast<TrackedPinch*>(gesture)) {
        pinch->track = PinchTrack();
        pinch->setScaleFactor(1.0);
        pinch->setCenterPoint(QPointF());
    }
    QGestureRecognizer::reset(gesture);
}
