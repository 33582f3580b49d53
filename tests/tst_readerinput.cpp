// The reading view's input: gestures, keys, drags past the page's edge, zoom
// fitting and orientation.

#include "ReaderFixture.h"

#include "DragGesture.h"
#include "PinchGesture.h"
#include "ZoomController.h"

#include <QGestureEvent>
#include <QPointer>
#include <QtTest>

using namespace ReaderFixture;

namespace {

const QString dragCall = QStringLiteral("PanningViewMixin::processDragGesture");
const QString pinchCall = QStringLiteral("PanningViewMixin::processPinchGesture");

QSwipeGesture::SwipeDirection direction(int value)
{
    return QSwipeGesture::SwipeDirection(value);
}

} // namespace

class TestReaderInput : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void tapOnlyWhenFinished_data();
    void tapOnlyWhenFinished();
    void gestureEventsReachTheHandlers();
    void swipe_data();
    void swipe();
    void dragOnlyWhenZoomed_data();
    void dragOnlyWhenZoomed();
    void pinchAlwaysZooms();
    void keys_data();
    void keys();
    void dragPastTheEdge_data();
    void dragPastTheEdge();
    void dragZoomedPage_data();
    void dragZoomedPage();
    void panIsClampedAndRepaintsOnlyOnChange();
    void fit_data();
    void fit();
    void fileBooksAnimate();

private:
    // A view on a ten-page book at page 5; its pages are 100 x 300 images.
    ProbeReader* makeView(const QSize& pageSize = QSize(100, 300));

    QPointer<QWidget> container;
};

void TestReaderInput::init()
{
    container = new QWidget;
}

void TestReaderInput::cleanup()
{
    delete container;
}

ProbeReader* TestReaderInput::makeView(const QSize& pageSize)
{
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    view->resize(200, 300);
    QList<QImage> images;
    for (int i = 0; i < 10; ++i)
        images << solid(pageSize.width(), pageSize.height(), Qt::blue);
    loadFake(view, QStringLiteral("/books/input.cbz"), images, nullptr);
    view->currentPage = 5;
    return view;
}

void TestReaderInput::tapOnlyWhenFinished_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("emitted");

    QTest::newRow("started") << int(Qt::GestureStarted) << false;
    QTest::newRow("updated") << int(Qt::GestureUpdated) << false;
    QTest::newRow("finished") << int(Qt::GestureFinished) << true;
    QTest::newRow("canceled") << int(Qt::GestureCanceled) << false;
}

void TestReaderInput::tapOnlyWhenFinished()
{
    QFETCH(int, state);
    QFETCH(bool, emitted);

    ProbeReader* view = makeView();
    QStringList log;
    logSignals(view, &log);
    TapGesture tap;
    tap.setGestureState(Qt::GestureState(state));

    QVERIFY(view->tapGesture(view, &tap));
    QCOMPARE(
        log, emitted ? QStringList { QStringLiteral("processTap(%1)").arg(state) } : QStringList());
}

void TestReaderInput::gestureEventsReachTheHandlers()
{
    ProbeReader* view = makeView();
    QStringList log;
    logSignals(view, &log);
    TapGesture tap;
    tap.setGestureState(Qt::GestureFinished);
    QGestureEvent event({ &tap });

    QVERIFY(view->event(&event));
    QCOMPARE(log, QStringList { QStringLiteral("processTap(3)") });
}

void TestReaderInput::swipe_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<int>("rotation");
    QTest::addColumn<int>("horizontal");
    QTest::addColumn<int>("vertical");
    QTest::addColumn<QStringList>("emitted");

    const int left = QSwipeGesture::Left, right = QSwipeGesture::Right;
    const int up = QSwipeGesture::Up, down = QSwipeGesture::Down;
    auto swipe = [](int horizontal, int vertical) {
        return QStringList { QStringLiteral("processSwipe(%1,%2)").arg(horizontal).arg(vertical) };
    };

    QTest::newRow("an unzoomed swipe goes to the host") << 1.0 << 0 << left << 0 << swipe(left, 0);
    QTest::newRow("a zoomed swipe is swallowed") << 1.5 << 0 << left << 0 << QStringList();
    QTest::newRow("landscape: up means right") << 1.0 << 1 << 0 << up << swipe(right, 0);
    QTest::newRow("landscape: down means left") << 1.0 << 1 << 0 << down << swipe(left, 0);
    QTest::newRow("landscape: left means up") << 1.0 << 1 << left << 0 << swipe(0, up);
    QTest::newRow("landscape: right means down") << 1.0 << 1 << right << 0 << swipe(0, down);
    QTest::newRow("landscape: a diagonal becomes horizontal")
        << 1.0 << 1 << left << up << swipe(right, 0);
    QTest::newRow("rotation 3 is landscape too") << 1.0 << 3 << 0 << up << swipe(right, 0);
    QTest::newRow("rotation 2 is upright") << 1.0 << 2 << 0 << up << swipe(0, up);
}

void TestReaderInput::swipe()
{
    QFETCH(double, zoom);
    QFETCH(int, rotation);
    QFETCH(int, horizontal);
    QFETCH(int, vertical);
    QFETCH(QStringList, emitted);

    ProbeReader* view = makeView();
    view->zoomController()->setZoomFactor(zoom);
    view->setOrientation(ScreenOrientation(rotation));
    QStringList log;
    logSignals(view, &log);
    SwipeGesture gesture;
    gesture.setHorizontalDirection(direction(horizontal));
    gesture.setVerticalDirection(direction(vertical));

    QVERIFY(view->swipeGesture(view, &gesture));
    QCOMPARE(log, emitted);
}

void TestReaderInput::dragOnlyWhenZoomed_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<bool>("passedOn");

    QTest::newRow("unzoomed drags are ignored") << 1.0 << false;
    QTest::newRow("zoomed drags pan") << 1.5 << true;
}

void TestReaderInput::dragOnlyWhenZoomed()
{
    QFETCH(double, zoom);
    QFETCH(bool, passedOn);

    ProbeReader* view = makeView();
    view->zoomController()->setZoomFactor(zoom);
    HostRecorder host;
    DragGesture drag;
    drag.setGestureState(Qt::GestureUpdated);
    drag.setDelta(QPoint(-30, 0));

    QVERIFY(view->dragGesture(view, &drag));
    const QList<HostRecorder::Call> calls = host.only({ dragCall });
    QCOMPARE(calls.size(), passedOn ? 1 : 0);
    if (passedOn)
        QCOMPARE(calls.first().args.value(1).toDouble(), zoom);
}

void TestReaderInput::pinchAlwaysZooms()
{
    ProbeReader* view = makeView();
    HostRecorder host;
    PinchGesture pinch;
    pinch.setGestureState(Qt::GestureUpdated);
    pinch.setScaleFactor(2.0);

    QVERIFY(view->pinchGesture(view, &pinch));
    QCOMPARE(host.names({ pinchCall }), QStringList { pinchCall });
    QCOMPARE(view->zoomController()->currentZoomFactor(), 2.0);
    QCOMPARE(view->renderedPage, -1);
}

void TestReaderInput::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("shown");

    QTest::newRow("left goes back") << int(Qt::Key_Left) << 4;
    QTest::newRow("page up goes back") << int(Qt::Key_PageUp) << 4;
    QTest::newRow("right goes forward") << int(Qt::Key_Right) << 6;
    QTest::newRow("page down goes forward") << int(Qt::Key_PageDown) << 6;
    QTest::newRow("up turns no page") << int(Qt::Key_Up) << 5;
    QTest::newRow("down turns no page") << int(Qt::Key_Down) << 5;
}

void TestReaderInput::keys()
{
    QFETCH(int, key);
    QFETCH(int, shown);

    ProbeReader* view = makeView();
    QTest::keyClick(view, Qt::Key(key));
    QCOMPARE(view->currentPage, shown);
}

void TestReaderInput::dragPastTheEdge_data()
{
    QTest::addColumn<QPoint>("offset");
    QTest::addColumn<int>("shown");

    // An unzoomed page inside the view sits at every edge at once.
    QTest::newRow("up by more than 80 turns forward") << QPoint(0, -81) << 6;
    QTest::newRow("up by 80 does not") << QPoint(0, -80) << 5;
    QTest::newRow("bottom edge first when vertical dominates") << QPoint(-81, -90) << 6;
    QTest::newRow("right edge when horizontal dominates") << QPoint(-90, -81) << 6;
    QTest::newRow("right by more than 80 turns back") << QPoint(81, 0) << 4;
    QTest::newRow("down by more than 80 turns back") << QPoint(0, 81) << 4;
    QTest::newRow("a diagonal dominates neither way") << QPoint(-90, 90) << 5;
}

void TestReaderInput::dragPastTheEdge()
{
    QFETCH(QPoint, offset);
    QFETCH(int, shown);

    ProbeReader* view = makeView();
    paint(view);

    view->processOffset(offset);

    QCOMPARE(view->currentPage, shown);
}

void TestReaderInput::dragZoomedPage_data()
{
    QTest::addColumn<QPoint>("pan");
    QTest::addColumn<QPoint>("offset");
    QTest::addColumn<int>("shown");
    QTest::addColumn<QPoint>("panAfter");

    // A 400 x 600 page image in a 200 x 300 view: the pan runs to (200, 300).
    QTest::newRow("inside the page a long drag pans, up to the edge")
        << QPoint(100, 150) << QPoint(0, -200) << 5 << QPoint(100, 300);
    QTest::newRow("at the bottom edge up by 81 turns forward")
        << QPoint(100, 300) << QPoint(0, -81) << 6 << QPoint(0, 0);
    QTest::newRow("at the bottom edge up by 80 changes nothing")
        << QPoint(100, 300) << QPoint(0, -80) << 5 << QPoint(100, 300);
    QTest::newRow("at the right edge left by 81 turns forward")
        << QPoint(200, 150) << QPoint(-81, 0) << 6 << QPoint(0, 0);
    QTest::newRow("at the right edge a mostly upward drag pans down the page")
        << QPoint(200, 150) << QPoint(-81, -90) << 5 << QPoint(200, 240);
    QTest::newRow("at the left edge right by 81 turns back")
        << QPoint(0, 150) << QPoint(81, 0) << 4 << QPoint(0, 0);
    QTest::newRow("at the top edge down by 81 turns back")
        << QPoint(100, 0) << QPoint(0, 81) << 4 << QPoint(0, 0);
    QTest::newRow("below the top edge down by 81 pans")
        << QPoint(100, 150) << QPoint(0, 81) << 5 << QPoint(100, 69);
}

void TestReaderInput::dragZoomedPage()
{
    QFETCH(QPoint, pan);
    QFETCH(QPoint, offset);
    QFETCH(int, shown);
    QFETCH(QPoint, panAfter);

    ProbeReader* view = makeView(QSize(200, 300));
    view->zoomController()->setZoomFactor(2.0);
    paint(view);
    QCOMPARE(view->pageImage.size(), QSize(400, 600));
    view->panX = pan.x();
    view->panY = pan.y();

    view->processOffset(offset);

    QCOMPARE(view->currentPage, shown);
    QCOMPARE(QPoint(view->panX, view->panY), panAfter);
}

void TestReaderInput::panIsClampedAndRepaintsOnlyOnChange()
{
    ProbeReader* view = makeView(QSize(200, 300));
    container->resize(200, 300);
    container->show();
    QVERIFY(QTest::qWaitForWindowExposed(container));
    view->zoomController()->setZoomFactor(2.0);
    QCoreApplication::processEvents();
    PaintCounter counter(view);

    // Moving the finger left moves the view toward the page's right side.
    view->processOffset(QPoint(-50, -30));
    QCOMPARE(QPoint(view->panX, view->panY), QPoint(50, 30));
    QCOMPARE(counter.paints, 1);

    view->processOffset(QPoint(-500, -70));
    QCOMPARE(QPoint(view->panX, view->panY), QPoint(view->maxXForZoom(), 100));
    QCOMPARE(counter.paints, 2);

    view->processOffset(QPoint(-10, 0));
    QCOMPARE(counter.paints, 2);
    QCOMPARE(view->currentPage, 5);
}

void TestReaderInput::fit_data()
{
    QTest::addColumn<int>("rotation");
    QTest::addColumn<QSize>("image");
    QTest::addColumn<bool>("width");
    QTest::addColumn<double>("zoom");

    QTest::newRow("fit width of a tall page") << 0 << QSize(600, 1200) << true << 1.5;
    QTest::newRow("fit width never zooms out") << 0 << QSize(600, 400) << true << 1.0;
    QTest::newRow("fit width in landscape resets") << 1 << QSize(600, 1200) << true << 1.0;
    QTest::newRow("fit height upright resets") << 0 << QSize(600, 1200) << false << 1.0;
    QTest::newRow("fit height in landscape uses the same ratio")
        << 1 << QSize(600, 1200) << false << 1.5;
    QTest::newRow("nothing shown fits at 1") << 0 << QSize() << true << 1.0;
}

void TestReaderInput::fit()
{
    QFETCH(int, rotation);
    QFETCH(QSize, image);
    QFETCH(bool, width);
    QFETCH(double, zoom);

    ProbeReader* view = makeView();
    view->resize(600, 800);
    view->zoomController()->setZoomFactor(2.5);
    view->rotation = rotation;
    view->pageImage = image.isEmpty() ? QImage() : solid(image.width(), image.height(), Qt::blue);

    if (width)
        view->fitWidth();
    else
        view->fitHeight();

    QCOMPARE(view->zoomController()->currentZoomFactor(), zoom);
}

void TestReaderInput::fileBooksAnimate()
{
    ProbeReader* view = makeView();
    HostRecorder host;
    view->enterAnimationMode();
    QCOMPARE(host.names({ QStringLiteral("PanningViewMixin::enterAnimationMode") }).size(), 1);
}

QTEST_MAIN(TestReaderInput)
#include "tst_readerinput.moc"
