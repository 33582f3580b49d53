// SPDX-License-Identifier: MIT
// The host's gesture objects.

#include "DragGesture.h"
#include "GestureRecognizers.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"
#include "TapGesture.h"
#include "TwoFingerScrollGesture.h"

#include <cstring>

namespace {

// Qt installs no private headers for the device's Qt, so the gesture's type
// and state are found in its private part the same way under both Qts: that
// part begins, after the QObject part, with the gesture type and state, and
// then the hot spot. Their place is found once, on a gesture of our own with
// a hot spot set through the public interface; every write is checked
// through the public getters.
struct GestureFields
{
    Qt::GestureType gestureType;
    Qt::GestureState state;
};

class ProbeGesture : public QGesture
{
public:
    static char* privateData(QGesture* gesture)
    {
        return reinterpret_cast<char*>(static_cast<ProbeGesture*>(gesture)->d_ptr.data());
    }
};

std::size_t fieldsOffset()
{
    QGesture probe;
    const QPointF mark(1234.5, -4321.25);
    probe.setHotSpot(mark);
    const char* data = ProbeGesture::privateData(&probe);
    const GestureFields fresh = { Qt::CustomGesture, Qt::NoGesture };
    for (std::size_t at = sizeof(QObjectData); at < 1024; at += sizeof(int)) {
        if (std::memcmp(data + at, &mark, sizeof mark) != 0)
            continue;
        // The hot spot may be padded to its alignment after the two fields.
        for (std::size_t gap = sizeof(GestureFields); gap <= sizeof(GestureFields) + sizeof(int);
             gap += sizeof(int)) {
            if (std::memcmp(data + at - gap, &fresh, sizeof fresh) == 0)
                return at - gap;
        }
    }
    qFatal("QGesture's private layout is not the one this host knows");
    return 0;
}

GestureFields* fieldsOf(QGesture* gesture)
{
    static const std::size_t offset = fieldsOffset();
    return reinterpret_cast<GestureFields*>(ProbeGesture::privateData(gesture) + offset);
}

// QGesture keeps its state for the gesture manager; gestures that the host
// makes by hand (scripted sessions, tests) set it here.
void setState(QGesture* gesture, Qt::GestureState state)
{
    fieldsOf(gesture)->state = state;
    if (gesture->state() != state)
        qFatal("a gesture's state could not be set");
}

// Qt delivers a gesture only to widgets that grabbed its type. The recognizers'
// gestures get it from the gesture manager; those made by hand get it here.
void setType(QGesture* gesture, Qt::GestureType type)
{
    fieldsOf(gesture)->gestureType = type;
    if (gesture->gestureType() != type)
        qFatal("a gesture's type could not be set");
}

} // namespace

TapGesture::TapGesture(QObject* parent)
    : QGesture(parent)
{
    setType(this, TapGestureRecognizer::_gestureType);
}

TapGesture::~TapGesture() = default;
QPointF TapGesture::position() const
{
    return m_position;
}
void TapGesture::setPosition(const QPointF& position)
{
    m_position = position;
}
void TapGesture::setGestureState(Qt::GestureState state)
{
    setState(this, state);
}

SwipeGesture::SwipeGesture(QObject* parent)
    : QGesture(parent)
    , m_horizontal(QSwipeGesture::NoDirection)
    , m_vertical(QSwipeGesture::NoDirection)
{
    setType(this, SwipeGestureRecognizer::_gestureType);
}

SwipeGesture::~SwipeGesture() = default;
QSwipeGesture::SwipeDirection SwipeGesture::horizontalDirection() const
{
    return m_horizontal;
}
void SwipeGesture::setHorizontalDirection(QSwipeGesture::SwipeDirection direction)
{
    m_horizontal = direction;
}
QSwipeGesture::SwipeDirection SwipeGesture::verticalDirection() const
{
    return m_vertical;
}
void SwipeGesture::setVerticalDirection(QSwipeGesture::SwipeDirection direction)
{
    m_vertical = direction;
}
void SwipeGesture::setGestureState(Qt::GestureState state)
{
    setState(this, state);
}

DragGesture::DragGesture(QObject* parent)
    : QGesture(parent)
{
    setType(this, DragGestureRecognizer::_gestureType);
}

DragGesture::~DragGesture() = default;
QPoint DragGesture::delta() const
{
    return m_delta;
}
void DragGesture::setDelta(const QPoint& delta)
{
    m_delta = delta;
}
QPoint DragGesture::position() const
{
    return m_position;
}
void DragGesture::setPosition(const QPoint& position)
{
    m_position = position;
}
void DragGesture::setGestureState(Qt::GestureState state)
{
    setState(this, state);
}

PinchGesture::PinchGesture(QObject* parent)
    : QGesture(parent)
    , m_scaleFactor(1.0)
{
    setType(this, PinchGestureRecognizer::_gestureType);
}

PinchGesture::~PinchGesture() = default;
qreal PinchGesture::scaleFactor() const
{
    return m_scaleFactor;
}
void PinchGesture::setScaleFactor(qreal factor)
{
    m_scaleFactor = factor;
}
QPointF PinchGesture::centerPoint() const
{
    return m_centerPoint;
}
void PinchGesture::setCenterPoint(const QPointF& point)
{
    m_centerPoint = point;
}
void PinchGesture::setGestureState(Qt::GestureState state)
{
    setState(this, state);
}

TwoFingerScrollGesture::TwoFingerScrollGesture(QObject* parent)
    : QGesture(parent)
{
}

TwoFingerScrollGesture::~TwoFingerScrollGesture() = default;
QPointF TwoFingerScrollGesture::delta() const
{
    return m_delta;
}
void TwoFingerScrollGesture::setDelta(const QPointF& delta)
{
    m_delta = delta;
}
