// SPDX-License-Identifier: MIT
// The host's library file and the stores behind it, and the JSON that the host
// program prints for values of host calls. Every traced call and the records'
// shapes show in the session traces of sessions/; here, what they cannot show.

#include "DogEarManager.h"
#include "Library.h"
#include "PageletManager.h"
#include "TestSupport.h"
#include "TraceJson.h"
#include "VolumeManager.h"

#include <QFile>
#include <QProcess>
#include <QtTest>

#include <memory>

namespace {

const QString bookId = QStringLiteral("/mnt/onboard/comics/Book.cbz");

Volume makeVolume(const QString& id, int pageCount)
{
    Volume volume;
    volume.setId(id);
    volume.setPageCount(pageCount);
    volume.setContentType(QStringLiteral("6"));
    volume.setAttribute(ATTRIBUTE_TITLE, QFileInfo(id).completeBaseName());
    volume.setAttribute(ATTRIBUTE_DESCRIPTION, QString());
    volume.setAttribute(ATTRIBUTE_ATTRIBUTION, QStringLiteral("Ann"));
    volume.setAttribute(ATTRIBUTE_MIME_TYPE, QStringLiteral("application/x-cbz"));
    volume.setAttribute(ATTRIBUTE_DATE, QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7, 89), Qt::UTC));
    volume.setUserID(QStringLiteral("cbz_user"));
    volume.setImageId(QStringLiteral("_mnt_onboard_comics_Book_cbz"));
    return volume;
}

QVector<Pagelet> makePages(const QString& bookId, int count)
{
    QVector<Pagelet> pages(count);
    for (int i = 0; i < count; ++i) {
        pages[i].setId(QStringLiteral("%1/p%2.jpg").arg(bookId).arg(i));
        pages[i].setContentType(QStringLiteral("9"));
        pages[i].setVolumeIndex(i);
        pages[i].setBookId(bookId);
        pages[i].setTitle(QStringLiteral("Page %1").arg(i + 1));
        pages[i].setAttribute(ATTRIBUTE_MIME_TYPE, QStringLiteral("application/x-cbz"));
        pages[i].setUserID(QStringLiteral("cbz_user"));
    }
    return pages;
}

QByteArray pagesJson(const QVector<Pagelet>& pages)
{
    QVector<QByteArray> items;
    for (const Pagelet& page : pages)
        items << TraceJson::pagelet(page);
    return TraceJson::array(items);
}

void addDogEar(int page)
{
    DogEarManager::sharedInstance()->addDogEar(page, bookId + QStringLiteral("/p.jpg"), bookId,
        QString(), page, 0, QString::number(page), 0.0, QDateTime::currentDateTimeUtc());
}

// Runs one statement on the SQLite file at path, as another program would.
bool runSql(const QString& path, const QString& statement)
{
    return QProcess::execute(QStringLiteral("sqlite3"), QStringList { path, statement }) == 0;
}

QStringList extraData(const QList<Bookmark>& bookmarks)
{
    QStringList result;
    for (const Bookmark& bookmark : bookmarks)
        result << bookmark.getExtraData();
    return result;
}

} // namespace

class TestLibrary : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void booksReadingStateAndDogEarsSurviveReopeningAndImport();
    void refusesFilesThatAreNotLibraries_data();
    void refusesFilesThatAreNotLibraries();
    void traceValuesHaveTheirJsonShape();

private:
    QString libraryPath() const { return m_dir->filePath(QStringLiteral("library.sqlite")); }
    void reopen();

    std::unique_ptr<TestSupport::TemporaryDir> m_dir;
};

void TestLibrary::init()
{
    m_dir = std::make_unique<TestSupport::TemporaryDir>();
    // An empty file is adopted as a new library.
    QVERIFY(TestSupport::writeFile(libraryPath(), QByteArray()));
    QVERIFY2(Library::open(libraryPath()), qPrintable(Library::lastError()));
}

void TestLibrary::cleanup()
{
    Library::close();
    DogEarManager::sharedInstance()->createTable(QString(), false);
    m_dir.reset();
}

void TestLibrary::reopen()
{
    Library::close();
    QVERIFY(!Library::isOpen());
    QVERIFY2(Library::open(libraryPath()), qPrintable(Library::lastError()));
}

void TestLibrary::booksReadingStateAndDogEarsSurviveReopeningAndImport()
{
    const Volume volume = makeVolume(bookId, 3);
    QVector<Pagelet> reversed = makePages(bookId, 3);
    std::reverse(reversed.begin(), reversed.end());
    QVERIFY(Library::storeBook(volume, reversed));
    const QString other = QStringLiteral("/other.cbz");
    QVERIFY(Library::storeBook(makeVolume(other, 2), makePages(other, 2)));
    reopen();

    Volume stored = VolumeManager::getById(bookId, QString());
    QCOMPARE(TraceJson::volume(stored), TraceJson::volume(volume));
    // Pages come in reading order, whatever order they were stored in.
    QCOMPARE(pagesJson(PageletManager::retrieveByBookId(bookId, QString())),
        pagesJson(makePages(bookId, 3)));

    const QString pageId = bookId + QStringLiteral("/p2.jpg");
    Library::ReadingState unread;
    QVERIFY(Library::readingState(bookId, &unread));
    VolumeManager::updateBookmark(bookId, pageId, 0, 0, 40, QDateTime::currentDateTimeUtc(), {});
    VolumeManager::updateReadingStatus(bookId, 2, QString());
    // An unknown book gets no record of its own.
    VolumeManager::updateReadingStatus(QStringLiteral("/unknown.cbz"), 1, QString());
    // Dog ears are kept per book; an image shown without a book has none.
    DogEarManager* dogEars = DogEarManager::sharedInstance();
    dogEars->createTable(bookId, true);
    addDogEar(1);
    addDogEar(2);
    dogEars->createTable(other, true);
    QVERIFY(dogEars->getBookmarks().isEmpty());
    addDogEar(9);
    dogEars->createTable(QString(), true);
    QVERIFY(!dogEars->isTableValid());
    addDogEar(3);
    reopen();

    // A re-import keeps the reading state and dog ears.
    QVERIFY(Library::storeBook(makeVolume(bookId, 2), makePages(bookId, 2)));
    stored = VolumeManager::getById(bookId, QString());
    QCOMPARE(stored.bookmarkedPageId(), pageId);
    QCOMPARE(stored.percentRead(), 40);
    QCOMPARE(stored.readStatus(), 2);
    QVERIFY(stored.isFinished());
    QCOMPARE(Library::books().size(), 2);
    dogEars->createTable(bookId, false);
    QCOMPARE(extraData(dogEars->getBookmarks()), QStringList({ "1", "2" }));
    QCOMPARE(extraData(Library::dogEars(other)), QStringList({ "9" }));

    // What a host puts back after a reading that must leave no trace.
    QVERIFY(Library::setReadingState(bookId, unread));
    stored = Library::book(bookId);
    QCOMPARE(stored.bookmarkedPageId(), QString());
    QCOMPARE(stored.percentRead(), 0);
    QCOMPARE(stored.readStatus(), 0);
}

void TestLibrary::refusesFilesThatAreNotLibraries_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");

    // The .sqlite files are libraries made by a first opening. tst_tamber
    // tries a file that is no SQLite and a damaged library.
    QTest::newRow("another program's SQLite file") << "other.db"
                                                   << "another program";
    QTest::newRow("a library of a newer schema") << "newer.sqlite"
                                                 << "newer";
    QTest::newRow("a read-only library") << "read-only.sqlite"
                                         << "read-only";
}

void TestLibrary::refusesFilesThatAreNotLibraries()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);

    Library::close();
    TestSupport::TemporaryDir dir;
    const QString path = dir.filePath(file);
    if (file == QLatin1String("other.db")) {
        QVERIFY(runSql(path, QStringLiteral("CREATE TABLE notes (text TEXT)")));
    } else {
        QVERIFY(Library::open(path));
        QVERIFY(Library::storeBook(makeVolume(bookId, 1), makePages(bookId, 1)));
        Library::close();
    }
    if (file == QLatin1String("newer.sqlite"))
        QVERIFY(runSql(path, QStringLiteral("PRAGMA user_version = 99")));
    if (file == QLatin1String("read-only.sqlite"))
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    const QStringList before = QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    const QByteArray bytes = TestSupport::readFile(path);

    QVERIFY(!Library::open(path));
    QVERIFY(!Library::isOpen());
    const QString error = Library::lastError();
    QVERIFY2(error.contains(reason), qPrintable(error));
    QVERIFY2(error.contains(path), qPrintable(error));
    QCOMPARE(TestSupport::readFile(path), bytes);
    QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
}

void TestLibrary::traceValuesHaveTheirJsonShape()
{
    // In UTC whatever the zone tamber runs in, where the sessions' times are
    // told apart from those of the samples.
    const QDateTime anHourEast
        = QDateTime::fromString(QStringLiteral("2026-11-21T10:30:00.005+01:00"), Qt::ISODate);
    QCOMPARE(TraceJson::value(anHourEast), QByteArray("\"2026-11-21T09:30:00.005Z\""));
    QCOMPARE(QString::fromUtf8(TraceJson::value(QStringLiteral("\"Ça\"\n"))),
        QString::fromUtf8("\"\\\"Ça\\\"\\n\""));
}

TAMBER_TEST_GUILESS_MAIN(TestLibrary)
#include "tst_library.moc"
