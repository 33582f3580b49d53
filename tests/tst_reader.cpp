// SPDX-License-Identifier: MIT
// The reading view where no trace can see it: its meta-object, what the paint
// handler puts on the screen, pans, touch, and dog ears that only the store
// can hold. Its signals and host calls on every path (opening, turning,
// saving, the end of the book, gestures, keys, zoom, dog ears) are checked end
// to end by the session scripts in sessions/.

#include "ComicArchive.h"
#include "ComicsReader.h"
#include "DogEarManager.h"
#include "Library.h"
#include "TestSupport.h"
#include "ZoomController.h"

#include <QMetaMethod>
#include <QPainter>
#include <QPointer>
#include <QTouchEvent>
#include <QtTest>

#include <map>

namespace {

const QColor ink = Qt::blue;
const QColor white = Qt::white;

// A reading view whose state the tests can see and set, and which counts the
// paint events it handles.
class ProbeReader : public ComicsReader
{
public:
    using ComicsReader::archive;
    using ComicsReader::ComicsReader;
    using ComicsReader::currentPage;
    using ComicsReader::event;
    using ComicsReader::isInAnimationMode;
    using ComicsReader::pages;
    using ComicsReader::panX;
    using ComicsReader::panY;
    using ComicsReader::renderedPage;
    using ComicsReader::volume;

    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        ComicsReader::paintEvent(event);
    }
};

// Pages p1.png, p2.png, ... in memory; counts the entries it decodes.
class FakeArchive : public ComicArchive
{
public:
    FakeArchive(const QList<QImage>& images, int* decodes)
        : ComicArchive(QString())
        , m_images(images)
        , m_decodes(decodes)
    {
    }
    QStringList files() override { return {}; }
    QImage data(const QString& name) override
    {
        ++*m_decodes;
        return m_images.value(name.mid(1, name.indexOf(QLatin1Char('.')) - 1).toInt() - 1);
    }

private:
    QList<QImage> m_images;
    int* m_decodes;
};

QImage solid(int width, int height, const QColor& colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour.rgba());
    return image;
}

// Left half one colour, right half another.
QImage halves(int width, int height, const QColor& left, const QColor& right)
{
    QImage image = solid(width, height, left);
    QPainter(&image).fillRect(width / 2, 0, width - width / 2, height, right);
    return image;
}

// What the view paints over a ground of the given colour: what the paint
// handler leaves alone keeps the ground's colour.
QImage paint(QWidget* view, const QColor& ground = Qt::red)
{
    QImage image(view->size(), QImage::Format_RGB32);
    image.fill(ground.rgba());
    view->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

} // namespace

class TestReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void methods();
    void bookWithoutPagesOnlySetsTheHeader();
    void inMemoryImageIsNeverAnimated();
    void touchIsSwallowed();

    void placement_data();
    void placement();
    void samePageNeitherDecodesNorFills();
    void panIsClampedKeptAndRepaintedOnlyOnChange();
    void unopenableFileClosesTheContainer();

    void dogEarOfThePage_data();
    void dogEarOfThePage();

private:
    // A 200 x 300 view on a book of these pages, from an archive in memory;
    // book ids ending in anything but ".cbz" get no archive.
    ProbeReader* makeView(
        const QList<QImage>& images, const QString& bookId = QStringLiteral("/books/b.cbz"));

    TestSupport::TemporaryDir dir;
    QPointer<QWidget> container;
    int decodes = 0;
};

void TestReader::initTestCase()
{
    QVERIFY(dir.isValid());
    QVERIFY2(Library::open(dir.filePath(QStringLiteral("library.db"))),
        qPrintable(Library::lastError()));
}

void TestReader::init()
{
    container = new QWidget;
    decodes = 0;
}

void TestReader::cleanup()
{
    delete container;
}

ProbeReader* TestReader::makeView(const QList<QImage>& images, const QString& bookId)
{
    // The host hands the view a child of its container; the view hangs itself
    // on the container.
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    view->resize(200, 300);
    view->volume.setId(bookId);
    view->volume.setPageCount(images.size());
    for (int i = 0; i < images.size(); ++i) {
        Pagelet page;
        page.setId(bookId + QStringLiteral("/p%1.png").arg(i + 1));
        page.setVolumeIndex(i);
        view->pages << page;
    }
    if (bookId.endsWith(QLatin1String(".cbz")))
        view->archive = new FakeArchive(images, &decodes);
    return view;
}

void TestReader::methods()
{
    const QMetaObject& meta = ComicsReader::staticMetaObject;
    QCOMPARE(int(meta.d.data[0]), TestSupport::mocRevision());
    QCOMPARE(meta.superClass(), &QWidget::staticMetaObject);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(TestSupport::methodsOf(meta),
        QStringList({
            "signal prevChapter()",
            "signal nextChapter()",
            "signal footerEvent(QString,int,int) title,page,numPages",
            "signal setChapterIndex(int) index",
            "signal setHeaderText(QString)",
            "signal doneLoading()",
            "signal allHighlightsLoaded()",
            "signal processSwipe(SwipeGesture*) swipe",
            "signal processTap(TapGesture*) tap",
            "slot renderVolume(Volume,ReadingNavigationType) volume,type",
            "slot renderPagelet(Pagelet,ReadingNavigationType) content,type",
            "slot renderPageletWithBookmark(Pagelet,Bookmark,ReadingNavigationType) "
            "pagelet,bookmark,type",
            "slot renderImage(QByteArray) imageData",
            "slot saveBookmark(bool,Volume*) send,volumeToUpdate",
            "slot goToPrevPage()",
            "slot goToNextPage()",
            "slot goToPage(int) page",
            "slot fontSettingsChanged()",
            "slot addDogEar()",
            "slot removeDogEar()",
            "slot removeDogEar(Bookmark&) dogEar",
            "slot checkDogEar(bool&) hasDogEar",
            "slot areDogEarsLoaded(bool&) isLoaded",
            "slot getDogEarKey(int&,Bookmark) key,dogEar",
            "private slot onUserZoomChanged()",
        }));
}

void TestReader::bookWithoutPagesOnlySetsTheHeader()
{
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    QSignalSpy header(view, SIGNAL(setHeaderText(QString)));
    QSignalSpy page(view, SIGNAL(setChapterIndex(int)));
    QSignalSpy done(view, SIGNAL(doneLoading()));
    Volume unknown;
    unknown.setId(QStringLiteral("/books/none.cbz"));
    unknown.setTitle(QStringLiteral("None"));

    QTest::ignoreMessage(QtDebugMsg,
        qPrintable(TestSupport::debugLine(QStringLiteral("No comics for \"/books/none.cbz\""))));
    view->renderVolume(unknown, ReadingNavigationRestore);

    QCOMPARE(header.count(), 1);
    QCOMPARE(header.first().first().toString(), QStringLiteral("None"));
    QVERIFY(page.isEmpty() && done.isEmpty());
    QVERIFY(view->volume.getId().isEmpty());
}

void TestReader::inMemoryImageIsNeverAnimated()
{
    auto* image = new ProbeReader(new QWidget(container), nullptr);
    image->renderImage(TestSupport::encode(solid(40, 60, ink), "PNG"));
    image->enterAnimationMode();
    QVERIFY(!image->isInAnimationMode());

    ProbeReader* book = makeView({ solid(40, 60, ink) });
    book->enterAnimationMode();
    QVERIFY(book->isInAnimationMode());
}

void TestReader::touchIsSwallowed()
{
    ProbeReader* view = makeView({});
    for (const int type :
        { int(QEvent::TouchBegin), int(QEvent::TouchUpdate), int(QEvent::TouchEnd), 209 }) {
        QTouchEvent event { QEvent::Type(type) };
        QVERIFY(view->event(&event));
        // The default handling would have ignored it.
        QVERIFY(event.isAccepted());
    }
}

void TestReader::placement_data()
{
    QTest::addColumn<QString>("pages");
    QTest::addColumn<int>("rotation");
    QTest::addColumn<QString>("expected");

    // The last page is shown: red on its left half, blue on its right; the
    // others are green. Expected: "x,y colour" (r, b or w for white). Turned,
    // a page's left lies at the top; scaled to the view's height across, it
    // is wider than the view, which shows its left part.
    const auto row = [](const char* name, const char* pages, int rotation, const char* expected) {
        QTest::newRow(name) << QString::fromLatin1(pages) << rotation
                            << QString::fromLatin1(expected);
    };
    row("a narrow page is centred across on white", "100x300", 0,
        "50,0 r; 149,299 b; 0,0 w; 49,150 w; 150,150 w; 199,299 w");
    row("a square page is centred down on white", "200x200", 0,
        "0,50 r; 199,249 b; 0,0 w; 100,49 w; 100,250 w; 199,299 w");
    row("a page exactly as wide as the view has no margin", "200x300", 0, "0,0 r; 199,299 b");
    row("a page one pixel narrower keeps its left edge", "199x300", 0,
        "0,0 r; 198,299 b; 199,0 w; 199,299 w");
    row("a small page is scaled up to fit", "50x75", 0, "0,0 r; 199,299 b");
    row("a wide first page turns the whole book", "300x200 200x300", 1, "100,10 r; 100,290 b");
    row("a tall first page keeps the book upright", "200x300 300x200", 0,
        "10,150 r; 190,150 b; 100,10 w");
    row("a square first page counts as upright", "200x200 300x200", 0,
        "10,150 r; 190,150 b; 100,10 w");
}

void TestReader::placement()
{
    QFETCH(QString, pages);
    QFETCH(int, rotation);
    QFETCH(QString, expected);

    QList<QImage> images;
    for (const QString& size : pages.split(QLatin1Char(' '))) {
        const int width = size.section(QLatin1Char('x'), 0, 0).toInt();
        const int height = size.section(QLatin1Char('x'), 1, 1).toInt();
        images << halves(width, height, Qt::red, Qt::blue);
    }
    for (int i = 0; i + 1 < images.size(); ++i)
        images[i].fill(QColor(Qt::green).rgb());
    ProbeReader* view = makeView(images);
    QImage shot = paint(view);
    QCOMPARE(int(view->orientation()), rotation);
    if (images.size() > 1) {
        view->goToNextPage();
        shot = paint(view);
        QCOMPARE(int(view->orientation()), rotation);
    }
    QCOMPARE(view->renderedPage, images.size() - 1);

    static const std::map<QString, QColor> colours { { "r", Qt::red }, { "b", Qt::blue },
        { "w", white } };
    for (const QString& item : expected.split(QStringLiteral("; "))) {
        const QStringList parts
            = QString(item).replace(QLatin1Char(','), QLatin1Char(' ')).split(QLatin1Char(' '));
        const QColor colour(shot.pixel(parts.at(0).toInt(), parts.at(1).toInt()));
        QVERIFY2(colour == colours.at(parts.at(2)),
            qPrintable(item + QStringLiteral(" expected, got ") + colour.name()));
    }
}

void TestReader::samePageNeitherDecodesNorFills()
{
    QImage translucent(100, 300, QImage::Format_ARGB32);
    translucent.fill(qRgba(0, 0, 0, 128));
    ProbeReader* view = makeView({ solid(100, 300, ink), solid(100, 300, Qt::green), translucent });

    QImage shot = paint(view, Qt::red);
    QCOMPARE(decodes, 1);
    QCOMPARE(QColor(shot.pixel(0, 0)), white);

    // The margin keeps whatever lay under the view: no fill this time.
    shot = paint(view, Qt::red);
    QCOMPARE(decodes, 1);
    QCOMPARE(QColor(shot.pixel(0, 0)), QColor(Qt::red));
    QCOMPARE(QColor(shot.pixel(100, 150)), ink);

    view->setPage(1);
    shot = paint(view, Qt::red);
    QCOMPARE(decodes, 2);
    QCOMPARE(QColor(shot.pixel(0, 0)), white);
    QCOMPARE(QColor(shot.pixel(100, 150)), QColor(Qt::green));

    // A zoom or orientation change prepares the page again.
    view->zoomController()->setZoomFactor(1.5);
    paint(view);
    view->setOrientation(ScreenOrientationPortrait);
    paint(view);
    QCOMPARE(decodes, 4);

    // A page with transparency shows on white, and the same on every paint.
    view->setPage(2);
    const QColor grey(paint(view, Qt::red).pixel(50, 150));
    QVERIFY2(qAbs(grey.red() - 127) <= 1 && grey.green() == grey.red(), qPrintable(grey.name()));
    QCOMPARE(QColor(paint(view, Qt::red).pixel(50, 150)), grey);
}

void TestReader::panIsClampedKeptAndRepaintedOnlyOnChange()
{
    ProbeReader* view = makeView({ halves(200, 300, Qt::red, ink) });
    container->resize(200, 300);
    container->show();
    QVERIFY(TestSupport::waitForWindowShown(container));
    const bool windowsPaint = view->paints > 0;
    view->zoomController()->setZoomFactor(2.0);

    // At twice the size the page is 400 x 600: the pan stops at its right edge
    // and its top, and the view shows the blue half. Scaled smoothly, the
    // halves blend only right at their border (x 200).
    view->panX = 1000;
    view->panY = -40;
    QImage shot = paint(view, Qt::green);
    QCOMPARE(QPoint(view->panX, view->panY), QPoint(200, 0));
    QCOMPARE(QColor(shot.pixel(10, 0)), ink);
    QCOMPARE(QColor(shot.pixel(199, 299)), ink);
    view->panX = 100;
    shot = paint(view, Qt::green);
    QCOMPARE(QColor(shot.pixel(90, 150)), QColor(Qt::red));
    QCOMPARE(QColor(shot.pixel(110, 150)), ink);

    // Moving the finger left and up moves the view toward the page's right
    // and bottom, repainting at once, and no further than the page goes.
    view->panX = 0;
    // Where the display paints no window (the SDK's VNC display), the pan is
    // checked and its repaints cannot be counted.
    const int paints = view->paints;
    const int step = windowsPaint ? 1 : 0;
    view->processOffset(QPoint(-50, -30));
    QCOMPARE(QPoint(view->panX, view->panY), QPoint(50, 30));
    QCOMPARE(view->paints, paints + step);
    view->processOffset(QPoint(-500, -70));
    QCOMPARE(QPoint(view->panX, view->panY), QPoint(200, 100));
    QCOMPARE(view->paints, paints + 2 * step);
    view->processOffset(QPoint(-10, 0));
    QCOMPARE(QPoint(view->panX, view->panY), QPoint(200, 100));
    QCOMPARE(view->paints, paints + 2 * step);
}

// It fails as a page that cannot be decoded does, whose trace the images
// session shows: the screen is left as it was, and the container goes.
void TestReader::unopenableFileClosesTheContainer()
{
    ProbeReader* view = makeView({ solid(200, 300, ink) }, QStringLiteral("/books/notes.unknown"));
    QTest::ignoreMessage(QtDebugMsg,
        qPrintable(TestSupport::debugLine(QStringLiteral("Couldn't figure out this file type!"))));
    const QImage shot = paint(view, Qt::red);

    QCOMPARE(shot, solid(200, 300, Qt::red));
    QCOMPARE(view->renderedPage, -1);
    QVERIFY2(container, "the container goes only when deferred deletions run");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(container.isNull());
}

void TestReader::dogEarOfThePage_data()
{
    QTest::addColumn<QStringList>("dogEars"); // "hidden:" marks one hidden
    QTest::addColumn<int>("page");
    QTest::addColumn<bool>("hasDogEar");
    QTest::addColumn<QStringList>("leftAfterRemoving");

    // The store asks the view for each dog ear's key: its extra data as a
    // page number, or the first page when that is no number.
    QTest::newRow("a hidden dog ear does not count, but goes by its key")
        << QStringList { "hidden:3", "5" } << 3 << false << QStringList { "5" };
    QTest::newRow("a visible one after a hidden one does")
        << QStringList { "hidden:1", "1", "5" } << 1 << true << QStringList { "5" };
    QTest::newRow("empty extra data never counts, yet its key is the first page")
        << QStringList { "" } << 0 << false << QStringList {};
    QTest::newRow("extra data that is no number belongs to the first page")
        << QStringList { "abc", "2" } << 0 << true << QStringList { "2" };
    QTest::newRow("and only there") << QStringList { "abc" } << 1 << false << QStringList { "abc" };
}

void TestReader::dogEarOfThePage()
{
    QFETCH(QStringList, dogEars);
    QFETCH(int, page);
    QFETCH(bool, hasDogEar);
    QFETCH(QStringList, leftAfterRemoving);

    // A new book whose store holds these dog ears, in order.
    const QString book
        = QStringLiteral("/books/%1.cbz").arg(QLatin1String(QTest::currentDataTag()));
    for (QString extraData : dogEars) {
        Bookmark dogEar;
        dogEar.setHidden(extraData.startsWith(QLatin1String("hidden:")));
        dogEar.setExtraData(extraData.remove(QStringLiteral("hidden:")));
        QVERIFY(Library::addDogEar(book, dogEar));
    }
    DogEarManager::sharedInstance()->createTable(book, true);
    ProbeReader* view = makeView({ solid(10, 10, ink) }, book);
    view->currentPage = page;
    bool flag = false;
    view->checkDogEar(flag);
    QCOMPARE(flag, hasDogEar);
    view->removeDogEar();
    QStringList left;
    for (const Bookmark& dogEar : Library::dogEars(book))
        left << (dogEar.isHidden() ? QStringLiteral("hidden:") : QString()) + dogEar.getExtraData();
    QCOMPARE(left, leftAfterRemoving);
}

TAMBER_TEST_MAIN(TestReader)
#include "tst_reader.moc"
