// The host's gesture framework: the recognizers fed with mouse, touch and
// wheel events, the receiver's hand-over of swipes, the panning mixin's
// reports, and the whole chain through Qt's gesture manager in a widget.

#include "DragGesture.h"
#include "GestureDelegate.h"
#include "GestureReceiver.h"
#include "GestureRecognizers.h"
#include "GestureRegistration.h"
#include "GestureScript.h"
#include "PanningViewMixin.h"
#include "PinchGesture.h"
#include "SwipeGesture.h"
#include "TapGesture.h"
#include "ZoomController.h"

#include <QGestureEvent>
#include <QWidget>
#include <QtTest>

#include <memory>

namespace {

// A widget that is its own gesture delegate and logs what it is handed.
class GestureLog : public QWidget, public GestureReceiver, public GestureDelegate
{
public:
    GestureLog() { setGestureDelegate(this); }

    bool tapGesture(GestureReceiver*, TapGesture* gesture) override
    {
        log << QStringLiteral("tap%1").arg(int(gesture->state()));
        return true;
    }
    bool swipeGesture(GestureReceiver*, SwipeGesture* gesture) override
    {
        log << QStringLiteral("swipe") + payload(gesture);
        return true;
    }
    bool dragGesture(GestureReceiver*, DragGesture*) override { return true; }
    bool pinchGesture(GestureReceiver*, PinchGesture* gesture) override
    {
        log << QStringLiteral("pinch") + payload(gesture);
        return true;
    }

    QStringList log;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::Gesture)
            return gestureEvent(static_cast<QGestureEvent*>(event));
        return QWidget::event(event);
    }
};

// A panning view that logs the offsets it is given.
class OffsetLog : public PanningViewMixin
{
public:
    void processOffset(const QPoint& offset) override { offsets << offset; }
    QList<QPoint> offsets;
};

} // namespace

class TestGestures : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void tap_data();
    void tap();
    void swipe_data();
    void swipe();
    void drag_data();
    void drag();
    void pinch_data();
    void pinch();

    void swipeReachesTheDelegateOnceOver_data();
    void swipeReachesTheDelegateOnceOver();
    void dragIsReportedWholeWhenItEnds_data();
    void dragIsReportedWholeWhenItEnds();
    void pinchZoomsWithinTheControllersBounds_data();
    void pinchZoomsWithinTheControllersBounds();

    void mouseInputReachesAGrabbingWidget();
};

void TestGestures::initTestCase()
{
    registerGestureRecognizers();
    QVERIFY(TapGestureRecognizer::_gestureType != Qt::CustomGesture);
}

void TestGestures::tap_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("results");

    QTest::newRow("a click") << "press 10,10; release 10,10"
                             << "trigger finish";
    QTest::newRow("a wobble within 16 pixels stays a tap")
        << "press 10,10; move 26,10; release 10,26"
        << "trigger trigger finish";
    QTest::newRow("moving further cancels it") << "press 10,10; move 27,10; release 27,10"
                                               << "trigger cancel ignore";
    QTest::newRow("a long press is still a tap") << "press 10,10 @0; release 10,10 @5000"
                                                 << "trigger finish";
    QTest::newRow("the right button taps nothing") << "rpress 10,10; hover 10,10"
                                                   << "ignore ignore";
    QTest::newRow("a release without a press") << "release 10,10"
                                               << "ignore";
    QTest::newRow("a finger") << "down 10,10; slide 12,12; up 12,12"
                              << "trigger trigger finish";
    QTest::newRow("a second finger cancels it") << "down 10,10; two 10,10 80,80"
                                                << "trigger cancel";
}

void TestGestures::tap()
{
    QFETCH(QString, script);
    QFETCH(QString, results);
    TapGestureRecognizer recognizer;
    QCOMPARE(recognizeScript(&recognizer, script), results);
}

void TestGestures::swipe_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("results");

    QTest::newRow("a quick flick to the left")
        << "press 200,100 @0; move 120,100 @50; release 139,100 @100"
        << "ignore ignore finish(left)";
    QTest::newRow("60 pixels is far enough") << "press 0,0 @0; release 60,0 @10"
                                             << "ignore finish(right)";
    QTest::newRow("59 pixels is not") << "press 0,0 @0; release 59,0 @10"
                                      << "ignore cancel";
    QTest::newRow("released at 400 ms") << "press 0,200 @1000; release 0,100 @1400"
                                        << "ignore finish(up)";
    QTest::newRow("released at 401 ms is no flick") << "press 0,200 @1000; release 0,100 @1401"
                                                    << "ignore cancel";
    QTest::newRow("a drift across under half stays straight") << "press 0,0; release 140,69"
                                                              << "ignore finish(right)";
    QTest::newRow("a diagonal carries both directions") << "press 100,100; release 0,180"
                                                        << "ignore finish(left+down)";
    QTest::newRow("a finger") << "down 0,0 @0; up 0,-90 @30"
                              << "ignore finish(up)";
    QTest::newRow("two fingers are no swipe") << "down 0,0; two 0,0 90,0; up 90,0"
                                              << "ignore cancel ignore";
}

void TestGestures::swipe()
{
    QFETCH(QString, script);
    QFETCH(QString, results);
    SwipeGestureRecognizer recognizer;
    QCOMPARE(recognizeScript(&recognizer, script), results);
}

void TestGestures::drag_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("results");

    QTest::newRow("starts beyond a tap, first with the whole movement")
        << "press 100,100; move 110,100; move 120,95; move 125,90; release 125,90"
        << "ignore ignore trigger(20,-5) trigger(5,-5) finish(0,0)";
    QTest::newRow("the release carries the last movement") << "press 0,0; move 0,30; release 0,42"
                                                           << "ignore trigger(0,30) finish(0,12)";
    QTest::newRow("a click is no drag") << "press 0,0; move 5,5; release 5,5"
                                        << "ignore ignore cancel";
    QTest::newRow("moving without a button") << "hover 0,0; hover 90,90"
                                             << "ignore ignore";
    QTest::newRow("a finger") << "down 0,0; slide -40,0; up -50,0"
                              << "ignore trigger(-40,0) finish(-10,0)";
    QTest::newRow("a second finger cancels it") << "down 0,0; slide 30,0; two 30,0 90,0"
                                                << "ignore trigger(30,0) cancel";
}

void TestGestures::drag()
{
    QFETCH(QString, script);
    QFETCH(QString, results);
    DragGestureRecognizer recognizer;
    QCOMPARE(recognizeScript(&recognizer, script), results);
}

void TestGestures::pinch_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("results");

    QTest::newRow("Ctrl+wheel zooms in a step at a time") << "wheel 1; wheel 2; ctrlup"
                                                          << "trigger(1.1) trigger(1.21) finish(1)";
    QTest::newRow("and out by the inverse") << "wheel -1"
                                            << "trigger(0.9091)";
    QTest::newRow("the wheel alone zooms nothing") << "plainwheel 1"
                                                   << "ignore";
    QTest::newRow("the wheel without Ctrl ends a pinch") << "wheel 1; plainwheel 1"
                                                         << "trigger(1.1) finish(1)";
    QTest::newRow("two fingers moving apart")
        << "down 0,0; two 0,0 100,0; two 0,0 150,0; two 0,0 75,0; lift 0,0 75,0"
        << "ignore trigger(1) trigger(1.5) trigger(0.5) finish(1)";
    QTest::newRow("one finger is no pinch") << "down 0,0; slide 50,0; up 50,0"
                                            << "ignore ignore ignore";
}

void TestGestures::pinch()
{
    QFETCH(QString, script);
    QFETCH(QString, results);
    PinchGestureRecognizer recognizer;
    QCOMPARE(recognizeScript(&recognizer, script), results);
}

void TestGestures::swipeReachesTheDelegateOnceOver_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("handed");

    // Qt reports a swipe recognized on the release as started, then finished.
    QTest::newRow("started") << int(Qt::GestureStarted) << false;
    QTest::newRow("updated") << int(Qt::GestureUpdated) << false;
    QTest::newRow("finished") << int(Qt::GestureFinished) << true;
    QTest::newRow("canceled") << int(Qt::GestureCanceled) << false;
    QTest::newRow("made by hand, in no state") << int(Qt::NoGesture) << true;
}

void TestGestures::swipeReachesTheDelegateOnceOver()
{
    QFETCH(int, state);
    QFETCH(bool, handed);

    GestureLog widget;
    SwipeGesture swipe;
    swipe.setHorizontalDirection(QSwipeGesture::Left);
    swipe.setGestureState(Qt::GestureState(state));
    QGestureEvent event({ &swipe });

    QVERIFY(widget.gestureEvent(&event));
    QCOMPARE(widget.log, handed ? QStringList { QStringLiteral("swipe(left)") } : QStringList());
}

void TestGestures::dragIsReportedWholeWhenItEnds_data()
{
    QTest::addColumn<QList<int>>("states");
    QTest::addColumn<QList<QPoint>>("deltas");
    QTest::addColumn<QList<QPoint>>("offsets");

    const int started = Qt::GestureStarted, updated = Qt::GestureUpdated;
    const int finished = Qt::GestureFinished, canceled = Qt::GestureCanceled;
    QTest::newRow("three reports make one offset of 81")
        << QList<int> { started, updated, finished }
        << QList<QPoint> { { 0, -30 }, { 0, -30 }, { 0, -21 } } << QList<QPoint> { { 0, -81 } };
    QTest::newRow("a canceled drag moves nothing")
        << QList<int> { started, canceled } << QList<QPoint> { { 90, 0 }, { 0, 0 } }
        << QList<QPoint>();
    QTest::newRow("a drag back to its start moves nothing")
        << QList<int> { started, finished } << QList<QPoint> { { 40, 0 }, { -40, 0 } }
        << QList<QPoint>();
    QTest::newRow("a drag made by hand in one piece")
        << QList<int> { int(Qt::NoGesture) } << QList<QPoint> { { -5, 7 } }
        << QList<QPoint> { { -5, 7 } };
    QTest::newRow("drags do not add up")
        << QList<int> { started, finished, started, finished }
        << QList<QPoint> { { 10, 0 }, { 0, 0 }, { 0, 20 }, { 0, 0 } }
        << QList<QPoint> { { 10, 0 }, { 0, 20 } };
}

void TestGestures::dragIsReportedWholeWhenItEnds()
{
    QFETCH(QList<int>, states);
    QFETCH(QList<QPoint>, deltas);
    QFETCH(QList<QPoint>, offsets);

    OffsetLog view;
    DragGesture drag;
    for (int i = 0; i < states.size(); ++i) {
        drag.setGestureState(Qt::GestureState(states.at(i)));
        drag.setDelta(deltas.at(i));
        view.processDragGesture(&drag, 1.5);
    }
    QCOMPARE(view.offsets, offsets);
}

void TestGestures::pinchZoomsWithinTheControllersBounds_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("scale");
    QTest::addColumn<int>("state");
    QTest::addColumn<double>("zoom");

    QTest::newRow("in") << 1.0 << 1.5 << int(Qt::GestureUpdated) << 1.5;
    QTest::newRow("out") << 2.0 << 0.5 << int(Qt::GestureFinished) << 1.0;
    QTest::newRow("not past the largest") << 2.5 << 2.0 << int(Qt::GestureUpdated) << 3.0;
    QTest::newRow("not below the smallest") << 1.2 << 0.5 << int(Qt::GestureUpdated) << 1.0;
    QTest::newRow("a canceled pinch zooms nothing")
        << 2.0 << 1.5 << int(Qt::GestureCanceled) << 2.0;
}

void TestGestures::pinchZoomsWithinTheControllersBounds()
{
    QFETCH(double, from);
    QFETCH(double, scale);
    QFETCH(int, state);
    QFETCH(double, zoom);

    ZoomController controller(nullptr, 1.0, 3.0, 1.0);
    controller.setZoomFactor(from);
    OffsetLog view;
    view.setZoomController(&controller);
    PinchGesture pinch;
    pinch.setGestureState(Qt::GestureState(state));
    pinch.setScaleFactor(scale);

    view.processPinchGesture(&pinch);
    QCOMPARE(controller.currentZoomFactor(), zoom);
}

// The recognizers at work behind a real widget: Qt's gesture manager feeds
// them the widget's input and delivers what they recognize.
void TestGestures::mouseInputReachesAGrabbingWidget()
{
    GestureLog widget;
    for (const Qt::GestureType type :
        { TapGestureRecognizer::_gestureType, DragGestureRecognizer::_gestureType,
            SwipeGestureRecognizer::_gestureType, PinchGestureRecognizer::_gestureType })
        widget.grabGesture(type);
    widget.resize(300, 300);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));

    QWindow* window = widget.windowHandle();
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, QPoint(150, 150));
    // Started on the press and finished on the release; updated or not between.
    widget.log.removeAll(QStringLiteral("tap%1").arg(int(Qt::GestureUpdated)));
    QCOMPARE(widget.log,
        (QStringList { QStringLiteral("tap%1").arg(int(Qt::GestureStarted)),
            QStringLiteral("tap%1").arg(int(Qt::GestureFinished)) }));

    widget.log.clear();
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, QPoint(250, 150));
    QTest::mouseMove(window, QPoint(150, 150));
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, QPoint(100, 150));
    QCOMPARE(
        widget.log.filter(QStringLiteral("swipe")), QStringList { QStringLiteral("swipe(left)") });
    // The tap that the press began ends on the way.
    QCOMPARE(widget.log.last(), QStringLiteral("swipe(left)"));
    QVERIFY(widget.log.contains(QStringLiteral("tap%1").arg(int(Qt::GestureCanceled))));

    widget.log.clear();
    std::unique_ptr<QEvent> wheel = makeInputEvent(QStringLiteral("wheel 1"));
    QCoreApplication::sendEvent(&widget, wheel.get());
    QCOMPARE(widget.log, QStringList { QStringLiteral("pinch(1.1)") });
}

QTEST_MAIN(TestGestures)
#include "tst_gestures.moc"
