// Watching the calls that the plug-in makes into the host, and the JSON that
// the host program prints for the values they carry.

#include "DogEarManager.h"
#include "HostTrace.h"
#include "Library.h"
#include "PageletManager.h"
#include "PagewiseSettings.h"
#include "SwipeGesture.h"
#include "TapGesture.h"
#include "TraceJson.h"
#include "VolumeManager.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>

using HostAction = std::function<void()>;
Q_DECLARE_METATYPE(HostAction)

namespace {

const QString bookId = QStringLiteral("/b.cbz");

// One "Class::method [args as JSON]" line per reported call.
class Recorder : public HostObserver
{
public:
    Recorder() { HostTrace::setObserver(this); }
    ~Recorder() override { HostTrace::setObserver(nullptr); }

    void hostCall(const QString& name, const QVariantList& args) override
    {
        lines << name + QLatin1Char(' ') + QString::fromUtf8(TraceJson::values(args));
        if (onCall)
            onCall();
    }

    QStringList lines;
    std::function<void()> onCall;
};

Bookmark storedDogEar(const QString& extraData)
{
    HostTrace::Suppress ownBehalf;
    for (const Bookmark& dogEar : DogEarManager::sharedInstance()->getBookmarks()) {
        if (dogEar.getExtraData() == extraData)
            return dogEar;
    }
    return Bookmark();
}

} // namespace

class TestHostTrace : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void storeCallsAreReportedWithTheirArguments_data();
    void storeCallsAreReportedWithTheirArguments();
    void onlyTheOutermostCallIsReported();
    void callsOnTheHostsOwnBehalfAreNotReported();
    void valuesHaveTheirJsonShape_data();
    void valuesHaveTheirJsonShape();

private:
    QTemporaryDir m_dir;
};

void TestHostTrace::initTestCase()
{
    QVERIFY(Library::open(m_dir.filePath(QStringLiteral("library.sqlite"))));
    Volume volume;
    volume.setId(bookId);
    volume.setPageCount(1);
    Pagelet page;
    page.setId(bookId + QStringLiteral("/1.png"));
    page.setBookId(bookId);
    QVERIFY(Library::storeBook(volume, { page }));
}

void TestHostTrace::cleanupTestCase()
{
    Library::close();
}

void TestHostTrace::init()
{
    DogEarManager::sharedInstance()->disconnect();
    DogEarManager::sharedInstance()->createTable(bookId, true);
    DogEarManager::sharedInstance()->addDogEar(
        2, QString(), bookId, QString(), 2, 0, QStringLiteral("2"), 0.0, QDateTime());
}

void TestHostTrace::storeCallsAreReportedWithTheirArguments_data()
{
    QTest::addColumn<HostAction>("action");
    QTest::addColumn<QString>("expected");

    const QDateTime date(QDate(2026, 11, 21), QTime(9, 30), Qt::UTC);
    QTest::newRow("VolumeManager::getById")
        << HostAction([] { VolumeManager::getById(bookId, QString()); })
        << R"(VolumeManager::getById ["/b.cbz",""])";
    QTest::newRow("VolumeManager::updateBookmark") << HostAction([date] {
        VolumeManager::updateBookmark(bookId, bookId + "/1.png", 0, 0, 40, date, QString());
    }) << R"(VolumeManager::updateBookmark ["/b.cbz","/b.cbz/1.png",0,0,40,"2026-11-21T09:30:00.000Z",""])";
    QTest::newRow("VolumeManager::updateReadingStatus")
        << HostAction([] { VolumeManager::updateReadingStatus(bookId, 2, QString()); })
        << R"(VolumeManager::updateReadingStatus ["/b.cbz",2,""])";
    QTest::newRow("PageletManager::retrieveByBookId")
        << HostAction([] { PageletManager::retrieveByBookId(bookId, QString()); })
        << R"(PageletManager::retrieveByBookId ["/b.cbz",""])";
    QTest::newRow("DogEarManager::createTable")
        << HostAction([] { DogEarManager::sharedInstance()->createTable(bookId, true); })
        << R"(DogEarManager::createTable ["/b.cbz",true])";
    QTest::newRow("DogEarManager::isTableValid")
        << HostAction([] { DogEarManager::sharedInstance()->isTableValid(); })
        << R"(DogEarManager::isTableValid [])";
    QTest::newRow("DogEarManager::getBookmarks")
        << HostAction([] { DogEarManager::sharedInstance()->getBookmarks(); })
        << R"(DogEarManager::getBookmarks [])";
    QTest::newRow("DogEarManager::addDogEar") << HostAction([date] {
        DogEarManager::sharedInstance()->addDogEar(
            3, bookId + "/1.png", bookId, QString(), 3, 0, QStringLiteral("3"), 0.0, date);
    }) << R"(DogEarManager::addDogEar [3,"/b.cbz/1.png","/b.cbz","",3,0,"3",0,"2026-11-21T09:30:00.000Z"])";
    QTest::newRow("DogEarManager::removeDogEar by key")
        << HostAction([] { DogEarManager::sharedInstance()->removeDogEar(2); })
        << R"(DogEarManager::removeDogEar [2])";
    QTest::newRow("DogEarManager::removeDogEar by record") << HostAction([] {
        Bookmark dogEar = storedDogEar(QStringLiteral("2"));
        DogEarManager::sharedInstance()->removeDogEar(dogEar);
    }) << R"(DogEarManager::removeDogEar [{"extraData":"2","hidden":false}])";
    QTest::newRow("PagewiseSettings::facebookName")
        << HostAction([] { PagewiseSettings(Device()).facebookName(); })
        << R"(PagewiseSettings::facebookName [])";
}

void TestHostTrace::storeCallsAreReportedWithTheirArguments()
{
    QFETCH(HostAction, action);
    QFETCH(QString, expected);

    Recorder recorder;
    action();
    QCOMPARE(recorder.lines, QStringList { expected });
}

void TestHostTrace::onlyTheOutermostCallIsReported()
{
    // A receiver of the key question that calls into the host itself, as a
    // view may; and an observer that does the same while it reports.
    connect(DogEarManager::sharedInstance(), &DogEarManager::getDogEarKey, this,
        [](int& key, const Bookmark& dogEar) {
            VolumeManager::getById(bookId, QString());
            key = dogEar.getExtraData().toInt();
        });
    Recorder recorder;
    recorder.onCall = [] { DogEarManager::sharedInstance()->isTableValid(); };

    DogEarManager::sharedInstance()->removeDogEar(2);
    QCOMPARE(recorder.lines, QStringList { "DogEarManager::removeDogEar [2]" });
    QCOMPARE(storedDogEar(QStringLiteral("2")).key(), 0);
}

void TestHostTrace::callsOnTheHostsOwnBehalfAreNotReported()
{
    Recorder recorder;
    {
        HostTrace::Suppress ownBehalf;
        VolumeManager::getById(bookId, QString());
        DogEarManager::sharedInstance()->getBookmarks();
    }
    QVERIFY(recorder.lines.isEmpty());
    DogEarManager::sharedInstance()->isTableValid();
    QCOMPARE(recorder.lines, QStringList { "DogEarManager::isTableValid []" });
}

void TestHostTrace::valuesHaveTheirJsonShape_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("json");

    Volume parsed;
    parsed.setId(QStringLiteral("/c/x.cbz"));
    parsed.setPageCount(12);
    parsed.setContentType(QStringLiteral("6"));
    parsed.setAttribute(ATTRIBUTE_TITLE, QStringLiteral("x"));
    parsed.setAttribute(ATTRIBUTE_DESCRIPTION, QString());
    parsed.setAttribute(ATTRIBUTE_ATTRIBUTION, QStringLiteral("Unknown Author"));
    parsed.setAttribute(ATTRIBUTE_MIME_TYPE, QStringLiteral("application/x-cbz"));
    parsed.setAttribute(ATTRIBUTE_DATE, QDateTime());
    parsed.setUserID(QStringLiteral("cbz_user"));
    parsed.setImageId(QStringLiteral("_c_x_cbz"));
    QTest::newRow("a volume as the parser makes it")
        << QVariant::fromValue(parsed)
        << R"({"id":"/c/x.cbz","title":"x","author":"Unknown Author","description":"","mimeType":"application/x-cbz","date":null,"contentType":"6","userId":"cbz_user","imageId":"_c_x_cbz","pageCount":12,"readStatus":0,"bookmarkedPageId":"","percentRead":0})";

    Volume stored;
    stored.setId(QStringLiteral("/c/y.cbz"));
    stored.setTitle(QStringLiteral("y"));
    stored.setReadStatus(2);
    stored.setBookmarkedPageId(QStringLiteral("/c/y.cbz/9.jpg"));
    stored.setPercentRead(90);
    QTest::newRow("a volume without attributes, with reading state")
        << QVariant::fromValue(stored)
        << R"({"id":"/c/y.cbz","title":"y","author":null,"description":null,"mimeType":null,"date":null,"contentType":"","userId":"","imageId":"","pageCount":0,"readStatus":2,"bookmarkedPageId":"/c/y.cbz/9.jpg","percentRead":90})";

    Pagelet page;
    page.setId(QStringLiteral("/c/x.cbz/ch1/001.jpg"));
    page.setContentType(QStringLiteral("9"));
    page.setVolumeIndex(0);
    page.setBookId(QStringLiteral("/c/x.cbz"));
    page.setTitle(QStringLiteral("Page 1"));
    page.setAttribute(ATTRIBUTE_MIME_TYPE, QStringLiteral("application/x-cbz"));
    page.setUserID(QStringLiteral("cbz_user"));
    QTest::newRow("a pagelet")
        << QVariant::fromValue(page)
        << R"({"id":"/c/x.cbz/ch1/001.jpg","title":"Page 1","bookId":"/c/x.cbz","volumeIndex":0,"contentType":"9","mimeType":"application/x-cbz","userId":"cbz_user"})";
    QTest::newRow("pagelets are counted")
        << QVariant::fromValue(QVector<Pagelet>(3, page)) << R"({"count":3})";

    Bookmark hidden;
    hidden.setExtraData(QStringLiteral("7"));
    hidden.setHidden(true);
    QTest::newRow("a bookmark") << QVariant::fromValue(hidden)
                                << R"({"extraData":"7","hidden":true})";

    QTest::newRow("a null image") << QVariant(QImage()) << R"({"width":0,"height":0,"null":true})";
    QTest::newRow("an image") << QVariant(QImage(114, 160, QImage::Format_RGB32))
                              << R"({"width":114,"height":160,"null":false})";

    auto tap = new TapGesture(this);
    tap->setGestureState(Qt::GestureFinished);
    QTest::newRow("a finished tap") << QVariant::fromValue(tap) << R"({"type":"tap","state":3})";
    auto swipe = new SwipeGesture(this);
    swipe->setHorizontalDirection(QSwipeGesture::Left);
    swipe->setVerticalDirection(QSwipeGesture::Up);
    QTest::newRow("a swipe up and left")
        << QVariant::fromValue(swipe) << R"({"type":"swipe","horizontal":1,"vertical":3})";

    QTest::newRow("a date-time in UTC with milliseconds")
        << QVariant(QDateTime(QDate(2026, 11, 21), QTime(10, 30, 0, 5), Qt::OffsetFromUTC, 3600))
        << R"("2026-11-21T09:30:00.005Z")";
    QTest::newRow("an invalid date-time is null") << QVariant(QDateTime()) << "null";
    QTest::newRow("a string with quotes, a line break and accents")
        << QVariant(QStringLiteral("\"Ça\"\n")) << R"("\"Ça\"\n")";
    QTest::newRow("an empty string stays a string") << QVariant(QString()) << R"("")";
    QTest::newRow("no value") << QVariant() << "null";
}

void TestHostTrace::valuesHaveTheirJsonShape()
{
    QFETCH(QVariant, value);
    QFETCH(QString, json);

    QCOMPARE(QString::fromUtf8(TraceJson::value(value)), json);
}

QTEST_GUILESS_MAIN(TestHostTrace)
#include "tst_hosttrace.moc"
