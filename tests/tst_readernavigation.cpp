// The reading view: page changes, their bounds, the end of the book, saving
// the reading position, and dog ears.

#include "ReaderFixture.h"

#include "DogEarManager.h"
#include "Library.h"
#include "PluginState.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>

using namespace ReaderFixture;

namespace {

const QString updateBookmark = QStringLiteral("VolumeManager::updateBookmark");
const QString updateReadingStatus = QStringLiteral("VolumeManager::updateReadingStatus");
const QString clear = QStringLiteral("MainWindowController::clear");

QStringList pageNames(int count)
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names << QStringLiteral("p%1.png").arg(i + 1, 2, 10, QLatin1Char('0'));
    return names;
}

} // namespace

class TestReaderNavigation : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void setPage_data();
    void setPage();
    void setPageWithoutPluginState();
    void navigation_data();
    void navigation();
    void endOfBook_data();
    void endOfBook();
    void saveBookmark_data();
    void saveBookmark();

    void dogEarOnCurrentPage();
    void removeDogEarAsksTheViewForKeys();
    void storeAsksTheViewForDogEarKeys();

private:
    // A view on a book of records page records whose own page count is pageCount.
    ProbeReader* makeView(int records, int pageCount, PluginState* state = nullptr);

    QTemporaryDir dir;
    QPointer<QWidget> container;
};

void TestReaderNavigation::initTestCase()
{
    QVERIFY(dir.isValid());
    QString error;
    QVERIFY2(Library::open(dir.filePath(QStringLiteral("library.db")), &error), qPrintable(error));
}

void TestReaderNavigation::init()
{
    container = new QWidget;
}

void TestReaderNavigation::cleanup()
{
    delete container;
}

ProbeReader* TestReaderNavigation::makeView(int records, int pageCount, PluginState* state)
{
    auto* view = new ProbeReader(new QWidget(container), state);
    const Comic comic = ReaderFixture::records(
        dir.filePath(QStringLiteral("book%1.cbz").arg(records)), pageNames(records));
    view->volume = comic.volume;
    view->volume.setPageCount(pageCount);
    view->pages = comic.pages;
    return view;
}

void TestReaderNavigation::setPage_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("pageCount");
    QTest::addColumn<int>("progress");

    QTest::newRow("progress truncates toward zero") << 3 << 7 << 57;
    QTest::newRow("the first of three pages is a third read") << 0 << 3 << 33;
    QTest::newRow("the page shown counts as read") << 2 << 3 << 100;
    QTest::newRow("a page past the end still completes") << 12 << 10 << 130;
    QTest::newRow("a book without a page count writes 0") << 4 << 0 << 0;
    QTest::newRow("page -1 of an empty book writes 0") << -1 << 0 << 0;
    QTest::newRow("an enormous page clamps the progress")
        << std::numeric_limits<int>::max() << 1 << std::numeric_limits<int>::max();
}

void TestReaderNavigation::setPage()
{
    QFETCH(int, page);
    QFETCH(int, pageCount);
    QFETCH(int, progress);

    PluginState state;
    ProbeReader* view = makeView(pageCount, pageCount, &state);
    view->panX = 15;
    view->panY = 25;
    QStringList log;
    logSignals(view, &log);

    view->setPage(page);

    const int shownNumber = page == std::numeric_limits<int>::max() ? page : page + 1;
    QCOMPARE(log,
        (QStringList { QStringLiteral("setChapterIndex(%1)").arg(page),
            QStringLiteral("footerEvent(,%1,%2)").arg(shownNumber).arg(pageCount) }));
    QCOMPARE(state.progressPercent, progress);
    QCOMPARE(view->currentPage, page);
    QCOMPARE(view->panX, 0);
    QCOMPARE(view->panY, 0);
    QCOMPARE(view->volume.readStatus(), 1);
}

void TestReaderNavigation::setPageWithoutPluginState()
{
    ProbeReader* view = makeView(7, 7);
    QStringList log;
    logSignals(view, &log);

    view->setPage(3);

    QCOMPARE(log,
        (QStringList {
            QStringLiteral("setChapterIndex(3)"), QStringLiteral("footerEvent(,4,7)") }));
}

void TestReaderNavigation::navigation_data()
{
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("pageCount");
    QTest::addColumn<int>("start");
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("argument");
    QTest::addColumn<int>("shown"); // -1: no page change

    QTest::newRow("prev on the first page does nothing") << 10 << 10 << 0 << "prev" << 0 << -1;
    QTest::newRow("prev steps back") << 10 << 10 << 5 << "prev" << 0 << 4;
    QTest::newRow("next steps forward") << 10 << 10 << 5 << "next" << 0 << 6;
    QTest::newRow("goto 0 does nothing") << 10 << 10 << 5 << "goto" << 0 << -1;
    QTest::newRow("goto past the count does nothing") << 10 << 10 << 5 << "goto" << 11 << -1;
    QTest::newRow("goto counts from 1") << 10 << 10 << 5 << "goto" << 10 << 9;
    QTest::newRow("chapter -1 does nothing") << 10 << 10 << 5 << "chapter" << -1 << -1;
    QTest::newRow("chapter at the record count does nothing")
        << 10 << 10 << 5 << "chapter" << 10 << -1;
    QTest::newRow("chapter counts from 0") << 10 << 10 << 5 << "chapter" << 0 << 0;
    // The record count and the book's page count normally agree; the bounds
    // tell which one each operation reads.
    QTest::newRow("chapter is bounded by the page records") << 3 << 5 << 0 << "chapter" << 3 << -1;
    QTest::newRow("goto is bounded by the page count") << 3 << 5 << 0 << "goto" << 5 << 4;
    QTest::newRow("next is bounded by the page count") << 3 << 5 << 2 << "next" << 0 << 3;
}

void TestReaderNavigation::navigation()
{
    QFETCH(int, records);
    QFETCH(int, pageCount);
    QFETCH(int, start);
    QFETCH(QString, action);
    QFETCH(int, argument);
    QFETCH(int, shown);

    ProbeReader* view = makeView(records, pageCount);
    view->currentPage = start;
    QStringList log;
    logSignals(view, &log);
    HostRecorder host;

    if (action == QLatin1String("prev"))
        view->goToPrevPage();
    else if (action == QLatin1String("next"))
        view->goToNextPage();
    else if (action == QLatin1String("goto"))
        view->goToPage(argument);
    else
        view->goToChapter(argument);

    if (shown < 0) {
        QVERIFY(log.isEmpty());
        QCOMPARE(view->currentPage, start);
        QVERIFY(view->setPageCalls.isEmpty());
    } else {
        QCOMPARE(log,
            (QStringList { QStringLiteral("setChapterIndex(%1)").arg(shown),
                QStringLiteral("footerEvent(,%1,%2)").arg(shown + 1).arg(pageCount) }));
        QCOMPARE(view->currentPage, shown);
        QCOMPARE(view->setPageCalls, QList<int> { shown });
    }
    QVERIFY(host.only({ updateBookmark, updateReadingStatus, clear }).isEmpty());
}

void TestReaderNavigation::endOfBook_data()
{
    QTest::addColumn<int>("pageCount");
    QTest::addColumn<int>("start");

    QTest::newRow("next on the last page finishes the book") << 10 << 9;
    QTest::newRow("every next finishes a one-page book") << 1 << 0;
    QTest::newRow("next beyond the book finishes it") << 10 << 12;
}

void TestReaderNavigation::endOfBook()
{
    QFETCH(int, pageCount);
    QFETCH(int, start);

    const Comic book = ReaderFixture::records(
        dir.filePath(QStringLiteral("end%1.cbz").arg(pageCount)), pageNames(pageCount));
    QVERIFY(Library::storeBook(book.volume, book.pages));
    PluginState state;
    auto* view = new ProbeReader(new QWidget(container), &state);
    view->renderPagelet(book.pages.first(), ReadingNavigationDefault);
    view->currentPage = start;
    state.progressPercent = -7;
    QStringList log;
    logSignals(view, &log);
    HostRecorder host;
    const QDateTime before = QDateTime::currentDateTimeUtc();

    view->goToNextPage();

    // Saved at the first page, finished, and closed; the view says nothing.
    const QList<HostRecorder::Call> calls
        = host.only({ updateBookmark, updateReadingStatus, clear });
    QCOMPARE(host.names({ updateBookmark, updateReadingStatus, clear }),
        (QStringList { updateBookmark, updateReadingStatus, clear }));
    const QVariantList bookmark = calls.at(0).args;
    QCOMPARE(bookmark.mid(0, 5),
        (QVariantList { book.volume.getId(), book.pages.first().getId(), 0, 0, 0 }));
    QCOMPARE(bookmark.value(6).toString(), QString());
    QCOMPARE(calls.at(1).args, (QVariantList { book.volume.getId(), 2, QString() }));
    QVERIFY(bookmark.value(5).toDateTime() >= before);

    QVERIFY(log.isEmpty());
    QCOMPARE(view->setPageCalls.size(), 1);
    QCOMPARE(view->currentPage, start);
    QCOMPARE(state.progressPercent, -7);

    const Volume stored = Library::book(book.volume.getId());
    QCOMPARE(stored.bookmarkedPageId(), book.pages.first().getId());
    QVERIFY(stored.isFinished());
}

void TestReaderNavigation::saveBookmark_data()
{
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("pageCount");
    QTest::addColumn<int>("current");
    QTest::addColumn<bool>("finished");
    QTest::addColumn<int>("progress"); // -1: nothing written
    QTest::addColumn<int>("status");

    QTest::newRow("page 4 of 10 saves 40 while reading") << 10 << 10 << 4 << false << 40 << 1;
    QTest::newRow("the last page never saves 100") << 10 << 10 << 9 << false << 90 << 1;
    QTest::newRow("a finished record saves finished") << 10 << 10 << 9 << true << 90 << 2;
    QTest::newRow("a one-page book is always finished") << 1 << 1 << 0 << false << 0 << 2;
    QTest::newRow("a record without a page count saves 0") << 3 << 0 << 2 << false << 0 << 1;
    QTest::newRow("no pages loaded writes nothing") << 0 << 10 << 0 << false << -1 << 0;
    QTest::newRow("a negative page writes nothing") << 10 << 10 << -1 << false << -1 << 0;
    QTest::newRow("a page past the records writes nothing") << 3 << 10 << 3 << false << -1 << 0;
}

void TestReaderNavigation::saveBookmark()
{
    QFETCH(int, records);
    QFETCH(int, pageCount);
    QFETCH(int, current);
    QFETCH(bool, finished);
    QFETCH(int, progress);
    QFETCH(int, status);

    ProbeReader* view = makeView(records, pageCount);
    view->currentPage = current;
    view->volume.setReadStatus(finished ? 2 : 1);
    const QString bookId = view->volume.getId();

    // The two arguments make no difference, and the given volume is left alone.
    QList<QList<HostRecorder::Call>> runs;
    Volume other;
    other.setId(QStringLiteral("other"));
    for (const bool send : { false, true }) {
        HostRecorder host;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        view->saveBookmark(send, send ? &other : nullptr);
        const QList<HostRecorder::Call> calls = host.only({ updateBookmark, updateReadingStatus });
        if (progress < 0) {
            QVERIFY(calls.isEmpty());
            continue;
        }
        QCOMPARE(calls.size(), 2);
        QCOMPARE(calls.at(0).name, updateBookmark);
        QCOMPARE(calls.at(0).args.mid(0, 5),
            (QVariantList { bookId, view->pages.at(current).getId(), 0, 0, progress }));
        const QDateTime now = calls.at(0).args.value(5).toDateTime();
        QCOMPARE(now.timeSpec(), Qt::UTC);
        QVERIFY(now >= before && now <= QDateTime::currentDateTimeUtc());
        QCOMPARE(calls.at(0).args.value(6).toString(), QString());
        QCOMPARE(calls.at(1).args, (QVariantList { bookId, status, QString() }));
    }
    QCOMPARE(other.getId(), QStringLiteral("other"));
    QCOMPARE(other.readStatus(), 0);
}

void TestReaderNavigation::dogEarOnCurrentPage()
{
    const Comic book
        = ReaderFixture::records(dir.filePath(QStringLiteral("dogears.cbz")), pageNames(6));
    QVERIFY(Library::storeBook(book.volume, book.pages));
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    view->renderPagelet(book.pages.at(3), ReadingNavigationDefault);
    HostRecorder host;

    view->addDogEar();

    const QList<HostRecorder::Call> added
        = host.only({ QStringLiteral("DogEarManager::addDogEar") });
    QCOMPARE(added.size(), 1);
    QCOMPARE(added.first().args.mid(0, 8),
        (QVariantList { 3, book.pages.at(3).getId(), book.volume.getId(), QString(), 3, 0,
            QStringLiteral("3"), 0.0 }));

    bool isLoaded = false;
    view->areDogEarsLoaded(isLoaded);
    QVERIFY(isLoaded);
    bool hasDogEar = false;
    view->checkDogEar(hasDogEar);
    QVERIFY(hasDogEar);
    // The slot only raises the flag; the caller's value stands otherwise.
    view->setPage(4);
    hasDogEar = false;
    view->checkDogEar(hasDogEar);
    QVERIFY(!hasDogEar);
    hasDogEar = true;
    view->checkDogEar(hasDogEar);
    QVERIFY(hasDogEar);
}

void TestReaderNavigation::removeDogEarAsksTheViewForKeys()
{
    const Comic book
        = ReaderFixture::records(dir.filePath(QStringLiteral("removal.cbz")), pageNames(6));
    QVERIFY(Library::storeBook(book.volume, book.pages));
    auto* view = new ProbeReader(new QWidget(container), nullptr);
    view->renderPagelet(book.pages.at(3), ReadingNavigationDefault);
    view->addDogEar();
    view->setPage(4);
    view->addDogEar();
    view->setPage(3);

    view->removeDogEar();

    QStringList left;
    for (const Bookmark& dogEar : Library::dogEars(book.volume.getId()))
        left << dogEar.getExtraData();
    QCOMPARE(left, QStringList { QStringLiteral("4") });
}

void TestReaderNavigation::storeAsksTheViewForDogEarKeys()
{
    new ProbeReader(new QWidget(container), nullptr);
    Bookmark dogEar;
    dogEar.setExtraData(QStringLiteral("12"));
    int key = -1;

    emit DogEarManager::sharedInstance()->getDogEarKey(key, dogEar);

    QCOMPARE(key, 12);
}

QTEST_MAIN(TestReaderNavigation)
#include "tst_readernavigation.moc"
