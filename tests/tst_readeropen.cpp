// The reading view: construction, its meta-object, and opening a book.

#include "ReaderFixture.h"

#include "GestureRecognizers.h"
#include "GestureRegistration.h"
#include "Library.h"
#include "PluginState.h"
#include "ZoomController.h"

#include <QApplication>
#include <QDesktopWidget>
#include <QMetaMethod>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

using namespace ReaderFixture;

namespace {

const QStringList openingCalls = { QStringLiteral("ZoomController::setAnalyticsEventInfo"),
    QStringLiteral("DogEarManager::createTable") };

} // namespace

class TestReaderOpen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void freshView();
    void methods_data();
    void methods();
    void metaObjectHoldsOnlyTheMethods();
    void metacastAnswersEveryBase_data();
    void metacastAnswersEveryBase();

    void opening_data();
    void opening();
    void bookWithoutPagesOnlySetsTheHeader();
    void secondBookKeepsTheFirstBooksPages();
    void imageInMemoryNeedsNoFile();

private:
    ProbeReader* makeView(PluginState* state = nullptr);

    QTemporaryDir dir;
    Comic ten;
    Comic three;
    QPointer<QWidget> container;
};

void TestReaderOpen::initTestCase()
{
    registerGestureRecognizers();
    QVERIFY(dir.isValid());
    QString error;
    QVERIFY2(Library::open(dir.filePath(QStringLiteral("library.db")), &error), qPrintable(error));
    QList<QImage> images;
    for (int i = 0; i < 10; ++i)
        images << solid(20, 30, QColor::fromHsv(i * 36, 200, 200));
    ten = storeComic(dir.filePath(QStringLiteral("ten.cbz")), images);
    three = storeComic(dir.filePath(QStringLiteral("three.cbz")), images.mid(0, 3));
}

void TestReaderOpen::init()
{
    container = new QWidget;
}

void TestReaderOpen::cleanup()
{
    delete container;
}

ProbeReader* TestReaderOpen::makeView(PluginState* state)
{
    // The host hands the view a child of its container; the view hangs itself
    // on the container.
    return new ProbeReader(new QWidget(container), state);
}

void TestReaderOpen::freshView()
{
    PluginState state;
    state.progressPercent = 42;
    ProbeReader* view = makeView(&state);

    QCOMPARE(view->parentWidget(), container.data());
    QCOMPARE(state.readerOpen, 1);
    QCOMPARE(state.progressPercent, 42);
    QCOMPARE(view->geometry(), QRect(QPoint(0, 0), QApplication::desktop()->size()));
    for (const char* name : { "showTitle", "showIndicators", "showStatusBottomLine" }) {
        QCOMPARE(view->property(name).type(), QVariant::Bool);
        QCOMPARE(view->property(name).toBool(), false);
    }
    QCOMPARE(view->currentPage, 0);
    QCOMPARE(view->renderedPage, -1);
    QCOMPARE(int(view->orientation()), -1);
    QVERIFY(!view->archive);
    QCOMPARE(view->zoomController()->parent(), view);
    QCOMPARE(view->zoomController()->currentZoomFactor(), 1.0);
    QCOMPARE(view->gestureDelegate(), static_cast<GestureDelegate*>(view));

    // Registration gives the view four real gesture types to grab.
    const QSet<Qt::GestureType> types { TapGestureRecognizer::_gestureType,
        DragGestureRecognizer::_gestureType, SwipeGestureRecognizer::_gestureType,
        PinchGestureRecognizer::_gestureType };
    QCOMPARE(types.size(), 4);
    QVERIFY(!types.contains(Qt::CustomGesture));
}

void TestReaderOpen::methods_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<QByteArray>("names");
    QTest::addColumn<int>("kind");

    const int signal = QMetaMethod::Signal;
    const int slot = QMetaMethod::Slot;
    const struct
    {
        const char* signature;
        const char* names;
        int kind;
    } methods[] = {
        { "prevChapter()", "", signal },
        { "nextChapter()", "", signal },
        { "footerEvent(QString,int,int)", "title,page,numPages", signal },
        { "setChapterIndex(int)", "index", signal },
        { "setHeaderText(QString)", "", signal },
        { "doneLoading()", "", signal },
        { "allHighlightsLoaded()", "", signal },
        { "processSwipe(SwipeGesture*)", "swipe", signal },
        { "processTap(TapGesture*)", "tap", signal },
        { "renderVolume(Volume,ReadingNavigationType)", "volume,type", slot },
        { "renderPagelet(Pagelet,ReadingNavigationType)", "content,type", slot },
        { "renderPageletWithBookmark(Pagelet,Bookmark,ReadingNavigationType)",
            "pagelet,bookmark,type", slot },
        { "renderImage(QByteArray)", "imageData", slot },
        { "saveBookmark(bool,Volume*)", "send,volumeToUpdate", slot },
        { "goToPrevPage()", "", slot },
        { "goToNextPage()", "", slot },
        { "goToPage(int)", "page", slot },
        { "fontSettingsChanged()", "", slot },
        { "addDogEar()", "", slot },
        { "removeDogEar()", "", slot },
        { "removeDogEar(Bookmark&)", "dogEar", slot },
        { "checkDogEar(bool&)", "hasDogEar", slot },
        { "areDogEarsLoaded(bool&)", "isLoaded", slot },
        { "getDogEarKey(int&,Bookmark)", "key,dogEar", slot },
        { "onUserZoomChanged()", "", slot },
    };
    int index = 0;
    for (const auto& method : methods) {
        QTest::newRow(method.signature)
            << index++ << QByteArray(method.signature) << QByteArray(method.names) << method.kind;
    }
}

void TestReaderOpen::methods()
{
    QFETCH(int, index);
    QFETCH(QByteArray, signature);
    QFETCH(QByteArray, names);
    QFETCH(int, kind);

    const QMetaObject& meta = ComicsReader::staticMetaObject;
    const QMetaMethod method = meta.method(meta.methodOffset() + index);
    QCOMPARE(method.methodSignature(), signature);
    QCOMPARE(method.parameterNames().join(','), names);
    QCOMPARE(int(method.methodType()), kind);
    if (kind == QMetaMethod::Slot) {
        const bool isPrivate = signature == "onUserZoomChanged()";
        QCOMPARE(method.access(), isPrivate ? QMetaMethod::Private : QMetaMethod::Public);
    }
}

void TestReaderOpen::metaObjectHoldsOnlyTheMethods()
{
    const QMetaObject& meta = ComicsReader::staticMetaObject;
    QCOMPARE(QByteArray(meta.className()), QByteArray("ComicsReader"));
    QCOMPARE(meta.superClass(), &QWidget::staticMetaObject);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 25);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
}

void TestReaderOpen::metacastAnswersEveryBase_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char* name : { "ComicsReader", "GestureReceiver", "GestureDelegate",
             "PanningViewMixin", "GuidedReadingMixin", "ImageReaderDelegate", "QWidget" })
        QTest::newRow(name) << QByteArray(name);
}

void TestReaderOpen::metacastAnswersEveryBase()
{
    QFETCH(QByteArray, name);
    ComicsReader* view = makeView();
    QHash<QByteArray, void*> bases;
    bases.insert("ComicsReader", view);
    bases.insert("GestureReceiver", static_cast<GestureReceiver*>(view));
    bases.insert("GestureDelegate", static_cast<GestureDelegate*>(view));
    bases.insert("PanningViewMixin", static_cast<PanningViewMixin*>(view));
    bases.insert("GuidedReadingMixin", static_cast<GuidedReadingMixin*>(view));
    bases.insert("ImageReaderDelegate", static_cast<ImageReaderDelegate*>(view));
    bases.insert("QWidget", static_cast<QWidget*>(view));
    QCOMPARE(view->qt_metacast(name.constData()), bases.value(name));
}

void TestReaderOpen::opening_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<int>("page");
    QTest::addColumn<QStringList>("expected");

    const QString analytics = openingCalls.at(0);
    const QString table = openingCalls.at(1);
    const QString header = QStringLiteral("setHeaderText(Ten pages)");
    const QString done = QStringLiteral("doneLoading");
    const QString highlights = QStringLiteral("allHighlightsLoaded");
    auto at = [](int page) {
        return QStringList { QStringLiteral("setChapterIndex(%1)").arg(page),
            QStringLiteral("footerEvent(,%1,10)").arg(page + 1) };
    };

    // For renderVolume the argument is the book's bookmarked entry.
    QTest::newRow("restore opens at the bookmarked page")
        << "renderVolume" << 2 << "p05.png" << 4
        << (QStringList { header, analytics, table } + at(4) + QStringList { done, highlights });
    QTest::newRow("restore without a bookmark opens the first page")
        << "renderVolume" << 2 << "" << 0
        << (QStringList { header, analytics, table } + at(0) + QStringList { done, highlights });
    QTest::newRow("restore with a stale bookmark opens the first page")
        << "renderVolume" << 2 << "gone.png" << 0
        << (QStringList { header, analytics, table } + at(0) + QStringList { done, highlights });
    QTest::newRow("other types ignore the bookmark")
        << "renderVolume" << 1 << "p05.png" << 0
        << (QStringList { header, analytics, table } + at(0) + QStringList { done, highlights });
    // For renderPagelet the argument is the page record's index.
    QTest::newRow("a page record opens at its index")
        << "renderPagelet" << 0 << "6" << 6
        << (QStringList { analytics, table } + at(6) + QStringList { done, highlights });
    // For renderPageletWithBookmark it is the bookmark's extra data.
    QTest::newRow("the bookmark jump comes after doneLoading")
        << "renderPageletWithBookmark" << 0 << "7" << 7
        << (QStringList { analytics, table } + at(2) + QStringList { done, highlights } + at(7));
    QTest::newRow("a bookmark that is no number jumps to the first page")
        << "renderPageletWithBookmark" << 0 << "abc" << 0
        << (QStringList { analytics, table } + at(2) + QStringList { done, highlights } + at(0));
}

void TestReaderOpen::opening()
{
    QFETCH(QString, slot);
    QFETCH(int, type);
    QFETCH(QString, argument);
    QFETCH(int, page);
    QFETCH(QStringList, expected);

    ProbeReader* view = makeView();
    QStringList log;
    logSignals(view, &log);
    HostRecorder host(&log, openingCalls);

    const auto navigation = ReadingNavigationType(type);
    if (slot == QLatin1String("renderVolume")) {
        Volume volume = ten.volume;
        volume.setTitle(QStringLiteral("Ten pages"));
        if (!argument.isEmpty())
            volume.setBookmarkedPageId(volume.getId() + QLatin1Char('/') + argument);
        view->renderVolume(volume, navigation);
    } else if (slot == QLatin1String("renderPagelet")) {
        view->renderPagelet(ten.pages.at(argument.toInt()), navigation);
    } else {
        Bookmark bookmark;
        bookmark.setExtraData(argument);
        view->renderPageletWithBookmark(ten.pages.at(2), bookmark, navigation);
    }

    QCOMPARE(log, expected);
    QCOMPARE(view->currentPage, page);
    QCOMPARE(view->volume.getId(), ten.volume.getId());
    QCOMPARE(view->volume.pageCount(), 10);
    QCOMPARE(view->pages.size(), 10);
    // Every page change goes through the virtual setPage.
    QCOMPARE(view->setPageCalls.size(), slot == QLatin1String("renderPageletWithBookmark") ? 2 : 1);
    QVERIFY2(!view->archive, "opening must leave the file to the first paint");

    const QList<HostRecorder::Call> calls = host.only(openingCalls);
    QCOMPARE(calls.size(), 2);
    QCOMPARE(calls.at(0).args.value(1).value<Volume>().getId(), ten.volume.getId());
    QCOMPARE(calls.at(1).args, (QVariantList { ten.volume.getId(), true }));
}

void TestReaderOpen::bookWithoutPagesOnlySetsTheHeader()
{
    ProbeReader* view = makeView();
    QStringList log;
    logSignals(view, &log);
    Volume unknown;
    unknown.setId(dir.filePath(QStringLiteral("none.cbz")));
    unknown.setTitle(QStringLiteral("None"));

    QTest::ignoreMessage(
        QtDebugMsg, qPrintable(QStringLiteral("No comics for \"%1\"").arg(unknown.getId())));
    view->renderVolume(unknown, ReadingNavigationRestore);

    QCOMPARE(log, QStringList { QStringLiteral("setHeaderText(None)") });
    QVERIFY(view->setPageCalls.isEmpty());
    QVERIFY(view->volume.getId().isEmpty());
}

void TestReaderOpen::secondBookKeepsTheFirstBooksPages()
{
    ProbeReader* view = makeView();
    view->renderVolume(ten.volume, ReadingNavigationDefault);
    view->renderPagelet(three.pages.at(1), ReadingNavigationDefault);

    QCOMPARE(view->volume.getId(), three.volume.getId());
    QCOMPARE(view->pages.size(), 10);
    QCOMPARE(view->pages.first().getId(), ten.pages.first().getId());
    QCOMPARE(view->currentPage, 1);
}

void TestReaderOpen::imageInMemoryNeedsNoFile()
{
    PluginState state;
    state.progressPercent = 42;
    ProbeReader* view = makeView(&state);
    view->resize(40, 60);
    QStringList log;
    logSignals(view, &log);
    HostRecorder host;

    view->renderImage(TestSupport::encode(solid(40, 60, Qt::blue), "PNG"));

    QCOMPARE(log,
        (QStringList { QStringLiteral("setChapterIndex(0)"), QStringLiteral("footerEvent(,1,0)"),
            QStringLiteral("doneLoading"), QStringLiteral("allHighlightsLoaded") }));
    // No page count: the progress is defined as 0.
    QCOMPARE(state.progressPercent, 0);
    QCOMPARE(paint(view), solid(40, 60, Qt::blue));

    // An image in memory is never animated.
    view->enterAnimationMode();
    QVERIFY(host.names({ QStringLiteral("PanningViewMixin::enterAnimationMode") }).isEmpty());
}

QTEST_MAIN(TestReaderOpen)
#include "tst_readeropen.moc"
