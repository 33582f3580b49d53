// SPDX-License-Identifier: MIT
// What a reader of tamber feels of the host's gestures: how far and how fast a
// mouse must move to tap, swipe or drag, Ctrl+wheel zoom, one page turn per
// swipe, and the panning view's offsets and zoom bounds. The device's host
// recognizes its own; the whole chain behind a real window is tst_readwindow's.

#include "DragGesture.h"
#include "GestureDelegate.h"
#include "GestureReceiver.h"
#include "GestureRecognizers.h"
#include "GestureRegistration.h"
#include "PanningViewMixin.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"
#include "TestSupport.h"
#include "ZoomController.h"

#include <QGestureEvent>
#include <QtTest>

#include <map>
#include <memory>

namespace {

QPointF point(const QString& text)
{
    return QPointF(text.section(QLatin1Char(','), 0, 0).toDouble(),
        text.section(QLatin1Char(','), 1, 1).toDouble());
}

// One event of a script such as "press 10,10 @0; move 40,10 @20" (screen
// positions, then the timestamp): press, move, release (left button); wheel N
// and plainwheel N (wheel steps with and without Ctrl); ctrlup.
std::unique_ptr<QInputEvent> inputEvent(const QString& step)
{
    static const std::map<QString, QEvent::Type> mice { { "press", QEvent::MouseButtonPress },
        { "move", QEvent::MouseMove }, { "release", QEvent::MouseButtonRelease } };
    QStringList words = step.split(QLatin1Char(' '), QtCompat::SkipEmptyParts);
    const ulong time
        = words.last().startsWith(QLatin1Char('@')) ? words.takeLast().mid(1).toULong() : 0;
    const QString verb = words.value(0);
    const QPointF at = point(words.value(1));
    if (mice.count(verb)) {
        const QEvent::Type type = mice.at(verb);
        return TestSupport::mouseEvent(type, at,
            type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, time);
    }
    if (verb == QLatin1String("ctrlup"))
        return std::unique_ptr<QInputEvent>(
            new QKeyEvent(QEvent::KeyRelease, Qt::Key_Control, Qt::NoModifier));
    const bool ctrl = verb == QLatin1String("wheel");
    return TestSupport::wheelEvent(at,
        int(words.value(1).toDouble() * GestureThresholds::WheelStepAngle),
        ctrl ? Qt::ControlModifier : Qt::NoModifier, time);
}

// What a report of the gesture carries: a drag's delta, a swipe's
// directions, a pinch's scale.
QString payload(QGesture* gesture)
{
    if (auto* drag = qobject_cast<DragGesture*>(gesture))
        return QStringLiteral("(%1,%2)").arg(drag->delta().x()).arg(drag->delta().y());
    if (auto* swipe = qobject_cast<SwipeGesture*>(gesture)) {
        static const char* const names[] = { "", "left", "right", "up", "down" };
        QStringList parts { QLatin1String(names[swipe->horizontalDirection()]),
            QLatin1String(names[swipe->verticalDirection()]) };
        parts.removeAll(QString());
        return QStringLiteral("(%1)").arg(parts.join(QStringLiteral("+")));
    }
    if (auto* pinch = qobject_cast<PinchGesture*>(gesture))
        return QStringLiteral("(%1)").arg(pinch->scaleFactor(), 0, 'g', 4);
    return QString();
}

// Feeds the script to the recognizer as Qt's gesture manager would, resetting
// the gesture after it finishes or is canceled, and names each result.
QString recognize(QGestureRecognizer* recognizer, const QString& script)
{
    QObject target;
    std::unique_ptr<QGesture> gesture(recognizer->create(&target));
    QStringList results;
    for (const QString& step : script.split(QLatin1Char(';'))) {
        const std::unique_ptr<QInputEvent> event = inputEvent(step.trimmed());
        static const std::map<int, QString> names { { QGestureRecognizer::MayBeGesture, "maybe" },
            { QGestureRecognizer::TriggerGesture, "trigger" },
            { QGestureRecognizer::FinishGesture, "finish" },
            { QGestureRecognizer::CancelGesture, "cancel" } };
        const int result = recognizer->recognize(gesture.get(), &target, event.get())
            & QGestureRecognizer::ResultState_Mask;
        results << (names.count(result) ? names.at(result) : QStringLiteral("ignore"));
        if (result == QGestureRecognizer::TriggerGesture
            || result == QGestureRecognizer::FinishGesture)
            results.last() += payload(gesture.get());
        if (result == QGestureRecognizer::FinishGesture
            || result == QGestureRecognizer::CancelGesture)
            recognizer->reset(gesture.get());
    }
    return results.join(QStringLiteral(" "));
}

// A receiver that is its own delegate and logs the states of the swipes it
// is handed.
class SwipeLog : public GestureReceiver, public GestureDelegate
{
public:
    SwipeLog() { setGestureDelegate(this); }
    bool swipeGesture(GestureReceiver*, SwipeGesture* swipe) override
    {
        handed << int(swipe->state());
        return true;
    }
    QList<int> handed;
};

// A panning view that logs the offsets it is given, as "x,y" separated by blanks.
class OffsetLog : public PanningViewMixin
{
public:
    void processOffset(const QPoint& offset) override
    {
        offsets << QStringLiteral("%1,%2").arg(offset.x()).arg(offset.y());
    }
    QStringList offsets;
};

} // namespace

class TestGestures : public QObject
{
    Q_OBJECT

private slots:
    void recognizers_data();
    void recognizers();
    void swipeReachesTheDelegateOnceOver();
    void panningViewWeighsWholeDragsAndBoundedPinches_data();
    void panningViewWeighsWholeDragsAndBoundedPinches();
};

void TestGestures::recognizers_data()
{
    QTest::addColumn<QString>("gesture");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("results");
    const auto row
        = [](const char* behaviour, const char* gesture, const char* script, const char* results) {
              QTest::newRow(behaviour) << QString(gesture) << QString(script) << QString(results);
          };

    row("a wobble within 16 pixels stays a tap", "tap", "press 10,10; move 26,10; release 10,26",
        "trigger trigger finish");
    row("moving further cancels a tap", "tap", "press 10,10; move 27,10; release 27,10",
        "trigger cancel ignore");

    row("60 pixels is far enough to swipe", "swipe", "press 0,0 @0; release 60,0 @10",
        "ignore finish(right)");
    row("59 pixels is not", "swipe", "press 0,0 @0; release 59,0 @10", "ignore cancel");
    row("released at 400 ms", "swipe", "press 0,200 @1000; release 0,100 @1400",
        "ignore finish(up)");
    row("released at 401 ms is no flick", "swipe", "press 0,200 @1000; release 0,100 @1401",
        "ignore cancel");
    row("a drift across under half stays straight", "swipe", "press 0,0; release 140,69",
        "ignore finish(right)");
    row("a diagonal carries both directions", "swipe", "press 100,100; release 0,180",
        "ignore finish(left+down)");

    row("a drag starts beyond a tap, first with the whole movement", "drag",
        "press 100,100; move 110,100; move 120,95; move 125,90; release 125,90",
        "ignore ignore trigger(20,-5) trigger(5,-5) finish(0,0)");

    row("Ctrl+wheel zooms in a step at a time", "pinch", "wheel 1; wheel 2; ctrlup",
        "trigger(1.1) trigger(1.21) finish(1)");
    row("the wheel alone zooms nothing", "pinch", "plainwheel 1", "ignore");
}

void TestGestures::recognizers()
{
    QFETCH(QString, gesture);
    QFETCH(QString, script);
    QFETCH(QString, results);

    TapGestureRecognizer tap;
    SwipeGestureRecognizer swipe;
    DragGestureRecognizer drag;
    PinchGestureRecognizer pinch;
    const std::map<QString, QGestureRecognizer*> recognizers { { "tap", &tap }, { "swipe", &swipe },
        { "drag", &drag }, { "pinch", &pinch } };
    QCOMPARE(recognize(recognizers.at(gesture), script), results);
}

void TestGestures::swipeReachesTheDelegateOnceOver()
{
    // Qt reports a swipe recognized on the release as started, then finished;
    // one made by hand has no state.
    SwipeLog receiver;
    for (const Qt::GestureState state :
        { Qt::GestureStarted, Qt::GestureFinished, Qt::GestureCanceled, Qt::NoGesture }) {
        SwipeGesture swipe;
        swipe.setGestureState(state);
        QGestureEvent event({ &swipe });
        QVERIFY(receiver.gestureEvent(&event));
    }
    QCOMPARE(receiver.handed, QList<int>({ Qt::GestureFinished, Qt::NoGesture }));
}

void TestGestures::panningViewWeighsWholeDragsAndBoundedPinches_data()
{
    QTest::addColumn<QString>("reports");
    QTest::addColumn<QString>("result");

    const auto row = [](const char* behaviour, const char* reports, const char* result) {
        QTest::newRow(behaviour) << QString(reports) << QString(result);
    };
    // Reports of drags and pinches to a view at zoom 2 of 1 to 3: the offsets
    // it is given, then its zoom when that changed.
    row("three reports make one offset of 81", "started 0,-30; updated 0,-30; finished 0,-21",
        "0,-81");
    row("a canceled drag moves nothing", "started 90,0; canceled 0,0", "");
    row("a pinch zooms not past the largest", "pinch updated 2", "zoom 3");
    row("nor below the smallest", "pinch finished 0.25", "zoom 1");
}

void TestGestures::panningViewWeighsWholeDragsAndBoundedPinches()
{
    QFETCH(QString, reports);
    QFETCH(QString, result);

    static const std::map<QString, Qt::GestureState> states { { "started", Qt::GestureStarted },
        { "updated", Qt::GestureUpdated }, { "finished", Qt::GestureFinished },
        { "canceled", Qt::GestureCanceled } };
    ZoomController controller(nullptr, 1.0, 3.0, 2.0);
    OffsetLog view;
    view.setZoomController(&controller);
    DragGesture drag;
    PinchGesture pinch;
    for (const QString& report : reports.split(QStringLiteral("; "))) {
        const QStringList words = report.split(QLatin1Char(' '));
        if (words.first() == QLatin1String("pinch")) {
            pinch.setGestureState(states.at(words.at(1)));
            pinch.setScaleFactor(words.at(2).toDouble());
            view.processPinchGesture(&pinch);
        } else {
            drag.setGestureState(states.at(words.at(0)));
            drag.setDelta(point(words.at(1)).toPoint());
            view.processDragGesture(&drag, 1.5);
        }
    }
    if (controller.currentZoomFactor() != 2.0)
        view.offsets << QStringLiteral("zoom %1").arg(controller.currentZoomFactor());
    QCOMPARE(view.offsets.join(QStringLiteral(" ")), result);
}

TAMBER_TEST_MAIN(TestGestures)
#include "tst_gestures.moc"
