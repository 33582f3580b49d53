#include "GestureScript.h"

#include "DragGesture.h"
#include "GestureRegistration.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"

#include <QtTest>

namespace {

QTouchDevice* touchScreen()
{
    static QTouchDevice* device = QTest::createTouchDevice();
    return device;
}

QPointF point(const QString& text)
{
    const QStringList xy = text.split(QLatin1Char(','));
    return QPointF(xy.value(0).toDouble(), xy.value(1).toDouble());
}

QTouchEvent::TouchPoint finger(int id, const QPointF& position, Qt::TouchPointState state)
{
    QTouchEvent::TouchPoint touch(id);
    touch.setScreenPos(position);
    touch.setPos(position);
    touch.setState(state);
    return touch;
}

QEvent* touchEvent(QEvent::Type type, const QList<QTouchEvent::TouchPoint>& fingers)
{
    Qt::TouchPointStates states;
    for (const QTouchEvent::TouchPoint& touch : fingers)
        states |= touch.state();
    return new QTouchEvent(type, touchScreen(), Qt::NoModifier, states, fingers);
}

QEvent* mouseEvent(
    QEvent::Type type, const QPointF& at, Qt::MouseButton button, Qt::MouseButtons buttons)
{
    return new QMouseEvent(type, at, at, at, button, buttons, Qt::NoModifier);
}

QEvent* wheelEvent(double steps, Qt::KeyboardModifiers modifiers)
{
    return new QWheelEvent(QPointF(50, 50), QPointF(50, 50), QPoint(),
        QPoint(0, int(steps * GestureThresholds::WheelStepAngle)), Qt::NoButton, modifiers,
        Qt::NoScrollPhase, false);
}

} // namespace

std::unique_ptr<QEvent> makeInputEvent(const QString& step)
{
    QStringList words = step.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    ulong time = 0;
    if (!words.isEmpty() && words.last().startsWith(QLatin1Char('@')))
        time = words.takeLast().mid(1).toULong();
    const QString verb = words.value(0);
    const QPointF at = point(words.value(1));
    QEvent* event = nullptr;
    if (verb == QLatin1String("press"))
        event = mouseEvent(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
    else if (verb == QLatin1String("move"))
        event = mouseEvent(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton);
    else if (verb == QLatin1String("release"))
        event = mouseEvent(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    else if (verb == QLatin1String("rpress"))
        event = mouseEvent(QEvent::MouseButtonPress, at, Qt::RightButton, Qt::RightButton);
    else if (verb == QLatin1String("hover"))
        event = mouseEvent(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton);
    else if (verb == QLatin1String("down"))
        event = touchEvent(QEvent::TouchBegin, { finger(0, at, Qt::TouchPointPressed) });
    else if (verb == QLatin1String("slide"))
        event = touchEvent(QEvent::TouchUpdate, { finger(0, at, Qt::TouchPointMoved) });
    else if (verb == QLatin1String("up"))
        event = touchEvent(QEvent::TouchEnd, { finger(0, at, Qt::TouchPointReleased) });
    else if (verb == QLatin1String("two"))
        event = touchEvent(QEvent::TouchUpdate,
            { finger(0, at, Qt::TouchPointMoved),
                finger(1, point(words.value(2)), Qt::TouchPointMoved) });
    else if (verb == QLatin1String("lift"))
        event = touchEvent(QEvent::TouchUpdate,
            { finger(0, at, Qt::TouchPointStationary),
                finger(1, point(words.value(2)), Qt::TouchPointReleased) });
    else if (verb == QLatin1String("wheel"))
        event = wheelEvent(words.value(1).toDouble(), Qt::ControlModifier);
    else if (verb == QLatin1String("plainwheel"))
        event = wheelEvent(words.value(1).toDouble(), Qt::NoModifier);
    else if (verb == QLatin1String("ctrlup"))
        event = new QKeyEvent(QEvent::KeyRelease, Qt::Key_Control, Qt::NoModifier);
    if (auto* input = dynamic_cast<QInputEvent*>(event))
        input->setTimestamp(time);
    return std::unique_ptr<QEvent>(event);
}

namespace {

QString resultName(QGestureRecognizer::Result result)
{
    switch (result & QGestureRecognizer::ResultState_Mask) {
    case QGestureRecognizer::MayBeGesture:
        return QStringLiteral("maybe");
    case QGestureRecognizer::TriggerGesture:
        return QStringLiteral("trigger");
    case QGestureRecognizer::FinishGesture:
        return QStringLiteral("finish");
    case QGestureRecognizer::CancelGesture:
        return QStringLiteral("cancel");
    default:
        return QStringLiteral("ignore");
    }
}

QString directionName(QSwipeGesture::SwipeDirection direction)
{
    static const char* const names[] = { "", "left", "right", "up", "down" };
    return QLatin1String(names[direction]);
}

} // namespace

QString payload(QGesture* gesture)
{
    if (auto* drag = qobject_cast<DragGesture*>(gesture))
        return QStringLiteral("(%1,%2)").arg(drag->delta().x()).arg(drag->delta().y());
    if (auto* swipe = qobject_cast<SwipeGesture*>(gesture)) {
        QStringList parts { directionName(swipe->horizontalDirection()),
            directionName(swipe->verticalDirection()) };
        parts.removeAll(QString());
        return QStringLiteral("(%1)").arg(parts.join(QLatin1Char('+')));
    }
    if (auto* pinch = qobject_cast<PinchGesture*>(gesture))
        return QStringLiteral("(%1)").arg(pinch->scaleFactor(), 0, 'g', 4);
    return QString();
}

QString recognizeScript(QGestureRecognizer* recognizer, const QString& script)
{
    QObject target;
    std::unique_ptr<QGesture> gesture(recognizer->create(&target));
    QStringList results;
    for (const QString& step : script.split(QLatin1Char(';'))) {
        const std::unique_ptr<QEvent> event = makeInputEvent(step.trimmed());
        const QGestureRecognizer::Result result
            = recognizer->recognize(gesture.get(), &target, event.get());
        QString name = resultName(result);
        if (name == QLatin1String("trigger") || name == QLatin1String("finish"))
            name += payload(gesture.get());
        results << name;
        if (name.startsWith(QLatin1String("finish")) || name == QLatin1String("cancel"))
            recognizer->reset(gesture.get());
    }
    return results.join(QLatin1Char(' '));
}
