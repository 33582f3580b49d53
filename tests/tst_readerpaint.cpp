// The reading view's paint handler, checked on pixels, and its event routing.

#include "ReaderFixture.h"

#include "Library.h"
#include "ZoomController.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QTouchEvent>
#include <QtTest>

using namespace ReaderFixture;

namespace {

const QSize viewSize(200, 300);
const QColor page = Qt::blue;
const QColor white = Qt::white;

} // namespace

class TestReaderPaint : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void placement_data();
    void placement();
    void fileUrlBookOpensItsFile();
    void panIsClampedAndKept();
    void samePageNeitherDecodesNorFills();
    void entryNameIsThePageIdLessTheBookId_data();
    void entryNameIsThePageIdLessTheBookId();
    void firstPageDecidesTheRotation_data();
    void firstPageDecidesTheRotation();
    void undecodablePageClosesTheContainer_data();
    void undecodablePageClosesTheContainer();
    void zoomRepaintsAtOnceAndPageTurnsLater();
    void touchIsSwallowed_data();
    void touchIsSwallowed();

private:
    ProbeReader* makeView();
    // A view on a cbz of these pages stored in the library, opened at page.
    ProbeReader* openComic(const QString& name, const QList<QImage>& images, int page = 0);

    QTemporaryDir dir;
    QPointer<QWidget> container;
};

void TestReaderPaint::initTestCase()
{
    QVERIFY(dir.isValid());
    QString error;
    QVERIFY2(Library::open(dir.filePath(QStringLiteral("library.db")), &error), qPrintable(error));
}

void TestReaderPaint::init()
{
    container = new QWidget;
}

void TestReaderPaint::cleanup()
{
    delete container;
}

ProbeReader* TestReaderPaint::makeView()
{
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    view->resize(viewSize);
    return view;
}

ProbeReader* TestReaderPaint::openComic(const QString& name, const QList<QImage>& images, int page)
{
    const Comic comic = storeComic(dir.filePath(name), images);
    ProbeReader* view = makeView();
    view->renderPagelet(comic.pages.value(page), ReadingNavigationDefault);
    return view;
}

void TestReaderPaint::placement_data()
{
    QTest::addColumn<QSize>("pageSize");
    QTest::addColumn<QList<QPoint>>("onPage");
    QTest::addColumn<QList<QPoint>>("onWhite");

    QTest::newRow("a narrow page is centred across on white")
        << QSize(100, 300) << QList<QPoint> { { 50, 0 }, { 149, 299 } }
        << QList<QPoint> { { 0, 0 }, { 49, 150 }, { 150, 150 }, { 199, 299 } };
    QTest::newRow("a square page is centred down on white")
        << QSize(200, 200) << QList<QPoint> { { 0, 50 }, { 199, 249 } }
        << QList<QPoint> { { 0, 0 }, { 100, 49 }, { 100, 250 }, { 199, 299 } };
    QTest::newRow("a page exactly as wide as the view has no margin")
        << QSize(200, 300) << QList<QPoint> { { 0, 0 }, { 199, 299 } } << QList<QPoint> {};
    QTest::newRow("a page one pixel narrower keeps its left edge")
        << QSize(199, 300) << QList<QPoint> { { 0, 0 }, { 198, 299 } }
        << QList<QPoint> { { 199, 0 }, { 199, 299 } };
    QTest::newRow("a small page is scaled up to fit")
        << QSize(50, 75) << QList<QPoint> { { 0, 0 }, { 199, 299 } } << QList<QPoint> {};
}

void TestReaderPaint::placement()
{
    QFETCH(QSize, pageSize);
    QFETCH(QList<QPoint>, onPage);
    QFETCH(QList<QPoint>, onWhite);

    ProbeReader* view = openComic(
        QStringLiteral("placement.cbz"), { solid(pageSize.width(), pageSize.height(), page) });
    const QImage shot = paint(view);

    for (const QPoint& point : onPage)
        QVERIFY2(shot.pixelColor(point) == page,
            qPrintable(QStringLiteral("page expected at %1,%2").arg(point.x()).arg(point.y())));
    for (const QPoint& point : onWhite)
        QVERIFY2(shot.pixelColor(point) == white,
            qPrintable(QStringLiteral("white expected at %1,%2").arg(point.x()).arg(point.y())));
    QCOMPARE(int(view->orientation()), 0);
    QCOMPARE(view->renderedPage, 0);
}

void TestReaderPaint::fileUrlBookOpensItsFile()
{
    const QString path = dir.filePath(QStringLiteral("url.cbz"));
    QVERIFY(TestSupport::writeZip(
        path, { { "p01.png", TestSupport::encode(solid(200, 300, page), "PNG") } }));
    const Comic comic = records(QStringLiteral("file://") + path, { QStringLiteral("p01.png") });
    QVERIFY(Library::storeBook(comic.volume, comic.pages));
    ProbeReader* view = makeView();
    view->renderPagelet(comic.pages.first(), ReadingNavigationDefault);

    QCOMPARE(paint(view), solid(200, 300, page));
}

void TestReaderPaint::panIsClampedAndKept()
{
    ProbeReader* view = makeView();
    QStringList decodes;
    loadFake(view, QStringLiteral("/books/pan.cbz"), { halves(200, 300, Qt::red, page) }, &decodes);
    view->zoomController()->setZoomFactor(2.0);
    view->panX = 1000;
    view->panY = -40;

    // At twice the size the page is 400 wide: the pan stops at its right edge,
    // and the view shows the blue half. Scaled smoothly, the halves blend only
    // right at their border (x 200).
    QImage shot = paint(view, Qt::green);
    QCOMPARE(view->panX, 200);
    QCOMPARE(view->panY, 0);
    QCOMPARE(shot.pixelColor(10, 0), page);
    QCOMPARE(shot.pixelColor(199, 299), page);

    view->panX = 100;
    shot = paint(view, Qt::green);
    QCOMPARE(shot.pixelColor(90, 150), QColor(Qt::red));
    QCOMPARE(shot.pixelColor(110, 150), page);
    QCOMPARE(view->panX, 100);
}

void TestReaderPaint::samePageNeitherDecodesNorFills()
{
    ProbeReader* view = makeView();
    QStringList decodes;
    loadFake(view, QStringLiteral("/books/same.cbz"),
        { solid(100, 300, page), solid(100, 300, Qt::green) }, &decodes);

    QImage shot = paint(view, Qt::red);
    QCOMPARE(decodes.size(), 1);
    QCOMPARE(shot.pixelColor(0, 0), white);

    // The margin keeps whatever lay under the view: no fill this time.
    shot = paint(view, Qt::red);
    QCOMPARE(decodes.size(), 1);
    QCOMPARE(shot.pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(shot.pixelColor(100, 150), page);

    view->setPage(1);
    shot = paint(view, Qt::red);
    QCOMPARE(decodes.size(), 2);
    QCOMPARE(shot.pixelColor(0, 0), white);
    QCOMPARE(shot.pixelColor(100, 150), QColor(Qt::green));

    // A zoom or orientation change prepares the page again.
    view->zoomController()->setZoomFactor(1.5);
    paint(view);
    view->setOrientation(ScreenOrientationPortrait);
    paint(view);
    QCOMPARE(decodes.size(), 4);
}

void TestReaderPaint::entryNameIsThePageIdLessTheBookId_data()
{
    QTest::addColumn<QString>("bookId");
    QTest::addColumn<int>("current");
    QTest::addColumn<QString>("entry");

    QTest::newRow("plain path") << "/books/a.cbz" << 1 << "p2.png";
    QTest::newRow("a file:// book id stays in the page ids")
        << "file:///books/a.cbz" << 0 << "p1.png";
    QTest::newRow("an index past the records asks for an empty record's entry")
        << "/books/a.cbz" << 5 << "";
}

void TestReaderPaint::entryNameIsThePageIdLessTheBookId()
{
    QFETCH(QString, bookId);
    QFETCH(int, current);
    QFETCH(QString, entry);

    ProbeReader* view = makeView();
    QStringList decodes;
    loadFake(view, bookId, { solid(10, 10, page), solid(10, 10, page) }, &decodes);
    view->currentPage = current;
    if (entry.isEmpty())
        QTest::ignoreMessage(QtDebugMsg, "Couldn't figure out this file type!");

    paint(view);

    QCOMPARE(decodes, QStringList { entry });
}

void TestReaderPaint::firstPageDecidesTheRotation_data()
{
    QTest::addColumn<QSize>("firstPage");
    QTest::addColumn<QSize>("secondPage");
    QTest::addColumn<int>("rotation");
    QTest::addColumn<QPoint>("red");
    QTest::addColumn<QPoint>("blue");
    QTest::addColumn<QPoint>("margin"); // (-1, -1): none

    // The second page is red on its left half and blue on its right. Turned,
    // its left lies at the top; scaled to the view's height across, it is
    // wider than the view, which shows its left part.
    QTest::newRow("a wide first page turns the whole book")
        << QSize(300, 200) << QSize(200, 300) << 1 << QPoint(100, 10) << QPoint(100, 290)
        << QPoint(-1, -1);
    QTest::newRow("a tall first page keeps the book upright")
        << QSize(200, 300) << QSize(300, 200) << 0 << QPoint(10, 150) << QPoint(190, 150)
        << QPoint(100, 10);
    QTest::newRow("a square first page counts as upright")
        << QSize(200, 200) << QSize(300, 200) << 0 << QPoint(10, 150) << QPoint(190, 150)
        << QPoint(100, 10);
}

void TestReaderPaint::firstPageDecidesTheRotation()
{
    QFETCH(QSize, firstPage);
    QFETCH(QSize, secondPage);
    QFETCH(int, rotation);
    QFETCH(QPoint, red);
    QFETCH(QPoint, blue);
    QFETCH(QPoint, margin);

    ProbeReader* view = openComic(QStringLiteral("rotation.cbz"),
        { solid(firstPage.width(), firstPage.height(), Qt::green),
            halves(secondPage.width(), secondPage.height(), Qt::red, Qt::blue) });
    paint(view);
    QCOMPARE(int(view->orientation()), rotation);

    view->goToNextPage();
    const QImage shot = paint(view);

    QCOMPARE(int(view->orientation()), rotation);
    QCOMPARE(shot.pixelColor(red), QColor(Qt::red));
    QCOMPARE(shot.pixelColor(blue), QColor(Qt::blue));
    if (margin.x() >= 0)
        QCOMPARE(shot.pixelColor(margin), white);
}

void TestReaderPaint::undecodablePageClosesTheContainer_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("writeFile");

    QTest::newRow("an entry that is no image") << "broken.cbz" << true;
    QTest::newRow("a file that no archive opens") << "notes.unknown" << false;
}

void TestReaderPaint::undecodablePageClosesTheContainer()
{
    QFETCH(QString, name);
    QFETCH(bool, writeFile);

    const QString path = dir.filePath(name);
    const QList<TestSupport::ZipEntry> entries
        = { { "p01.png", TestSupport::encode(solid(200, 300, page), "PNG") },
              { "p02.png", QByteArray("this is not an image") } };
    Comic comic;
    if (writeFile) {
        comic = storeComicEntries(path, entries);
    } else {
        comic = records(path, { QStringLiteral("p01.png"), QStringLiteral("p02.png") });
        QVERIFY(Library::storeBook(comic.volume, comic.pages));
    }
    ProbeReader* view = makeView();
    view->renderPagelet(comic.pages.at(1), ReadingNavigationDefault);

    QTest::ignoreMessage(QtDebugMsg, "Couldn't figure out this file type!");
    const QImage shot = paint(view, Qt::red);

    QCOMPARE(shot, solid(200, 300, Qt::red));
    QCOMPARE(view->renderedPage, -1);
    QVERIFY2(container, "the container goes only when deferred deletions run");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(container.isNull());
}

void TestReaderPaint::zoomRepaintsAtOnceAndPageTurnsLater()
{
    ProbeReader* view = makeView();
    QStringList decodes;
    loadFake(view, QStringLiteral("/books/shown.cbz"),
        { solid(100, 300, page), solid(100, 300, page) }, &decodes);
    container->resize(viewSize);
    container->show();
    QVERIFY(QTest::qWaitForWindowExposed(container));
    QCoreApplication::processEvents();
    PaintCounter counter(view);
    const int decoded = decodes.size();
    QCOMPARE(decoded, 1);

    // Either zoom signal prepares the page again before it returns.
    emit view->zoomController()->zoomFactorUpdated(1.0, 1.0);
    QCOMPARE(decodes.size(), 2);
    emit view->zoomController()->zoomFactorUpdatedWithOffset(1.0, 1.0, QPointF());
    QCOMPARE(decodes.size(), 3);

    // A page change paints on the next pass of the event loop.
    view->setPage(1);
    QCOMPARE(decodes.size(), 3);
    QCoreApplication::processEvents();
    QCOMPARE(decodes.size(), 4);

    // The end of the book asks for no paint at all.
    const int paints = counter.paints;
    view->goToNextPage();
    QCoreApplication::processEvents();
    QCOMPARE(counter.paints, paints);
}

void TestReaderPaint::touchIsSwallowed_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("touch begin") << int(QEvent::TouchBegin);
    QTest::newRow("touch update") << int(QEvent::TouchUpdate);
    QTest::newRow("touch end") << int(QEvent::TouchEnd);
    QTest::newRow("event 209") << 209;
}

void TestReaderPaint::touchIsSwallowed()
{
    QFETCH(int, type);
    ProbeReader* view = makeView();
    QTouchEvent event { QEvent::Type(type) };

    QVERIFY(view->event(&event));
    // The default handling would have ignored it.
    QVERIFY(event.isAccepted());
}

QTEST_MAIN(TestReaderPaint)
#include "tst_readerpaint.moc"
