// Reading in a real window: "tamber read" on a shared sample under an X
// server, driven by key presses and clicks as a person would drive it, and the
// library file checked afterwards.

#include "Library.h"
#include "ReadWindowDriver.h"
#include "TestSupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

const QStringList windowSize { QStringLiteral("--size"), QStringLiteral("600x800") };

// The page number that the window's title shows, 0 when it shows none.
int shownPage(const QString& title)
{
    static const QRegularExpression footer(QStringLiteral("page (\\d+) of \\d+$"));
    return footer.match(title).captured(1).toInt();
}

// Share of the pixels that are not near white.
double inkedShare(const QImage& image)
{
    qint64 inked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            inked += qGray(image.pixel(x, y)) < 230 ? 1 : 0;
    }
    return double(inked) / (qint64(image.width()) * image.height());
}

// Share of the pixels that differ between two pictures of one size.
double differingShare(const QImage& a, const QImage& b)
{
    qint64 differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            differing += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
    }
    return double(differing) / (qint64(a.width()) * a.height());
}

} // namespace

class TestReadWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void keysClicksAndFlicksTurnPagesAndEscapeSaves();
    void reopensWhereReadingStoppedAndClosesAtTheEnd();
    void middleTapMenuDogEarsThePage();
    void undecodablePageEndsTheProgramWithStatus1();

private:
    void savePosition(int page);
    QByteArray tamber(const QStringList& arguments, int* status = nullptr);
    std::unique_ptr<ReadWindowDriver> read(const QString& book);
    QJsonObject listed(const QString& book);

    QTemporaryDir dir;
    QProcessEnvironment environment;
    QString sample;
    QStringList pageIds;
};

void TestReadWindow::initTestCase()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        QSKIP("no X display: run under xvfb-run");
    TAMBER_REQUIRE_SAMPLES();
    QVERIFY(dir.isValid());

    environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    environment.remove(QStringLiteral("TAMBER_PLUGIN"));
    environment.insert(QStringLiteral("TAMBER_LIBRARY"), dir.filePath(QStringLiteral("l.sqlite")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    const QString runtime = dir.filePath(QStringLiteral("runtime"));
    QVERIFY(QDir().mkpath(runtime));
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);

    sample = TestSupport::sampleCbz();
    int status = -1;
    tamber({ QStringLiteral("import"), sample }, &status);
    QCOMPARE(status, 0);
    QVERIFY(Library::open(environment.value(QStringLiteral("TAMBER_LIBRARY"))));
    for (const Pagelet& page : Library::pages(sample))
        pageIds << page.getId();
    Library::close();
    QCOMPARE(pageIds.size(), 5);
}

// Stores the reading position at a 0-based page, as a reading before would have.
void TestReadWindow::savePosition(int page)
{
    QVERIFY(Library::open(environment.value(QStringLiteral("TAMBER_LIBRARY"))));
    QVERIFY(Library::updateBookmark(
        sample, pageIds.at(page), 100 * page / 5, QDateTime::currentDateTimeUtc()));
    Library::close();
}

QByteArray TestReadWindow::tamber(const QStringList& arguments, int* status)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(TestSupport::binDir() + QStringLiteral("/tamber"), arguments);
    const bool finished = process.waitForFinished(60000);
    if (status)
        *status
            = finished && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return process.readAllStandardOutput();
}

std::unique_ptr<ReadWindowDriver> TestReadWindow::read(const QString& book)
{
    auto driver = std::make_unique<ReadWindowDriver>(environment);
    if (!driver->start(TestSupport::binDir() + QStringLiteral("/tamber"),
            QStringList { QStringLiteral("read"), book } + windowSize))
        qWarning("%s", qPrintable(driver->error()));
    return driver;
}

QJsonObject TestReadWindow::listed(const QString& book)
{
    const QJsonArray books
        = QJsonDocument::fromJson(tamber({ QStringLiteral("list"), QStringLiteral("--json") }))
              .array();
    for (const QJsonValue& value : books) {
        if (value.toObject().value(QStringLiteral("id")).toString() == book)
            return value.toObject();
    }
    return QJsonObject();
}

void TestReadWindow::keysClicksAndFlicksTurnPagesAndEscapeSaves()
{
    savePosition(0);
    const std::unique_ptr<ReadWindowDriver> window = read(sample);
    QTRY_COMPARE(shownPage(window->title()), 1);
    QVERIFY(window->title().startsWith(QStringLiteral("Captain Science #001 - ")));
    const QImage firstPage = window->screenshot();
    QVERIFY2(!firstPage.isNull(), qPrintable(window->error()));

    // The screen is 600 wide: its thirds part at 200 and 400.
    struct Step
    {
        const char* what;
        std::function<bool()> act;
        int page;
    };
    ReadWindowDriver* w = window.get();
    const QList<Step> steps {
        { "Right goes forward", [w] { return w->key(QStringLiteral("Right")); }, 2 },
        { "Page Down goes forward", [w] { return w->key(QStringLiteral("Next")); }, 3 },
        { "Left goes back", [w] { return w->key(QStringLiteral("Left")); }, 2 },
        { "a click in the right third goes forward",
            [w] {
                return w->click({ 500, 400 });
            },
            3 },
        { "a click in the left third goes back",
            [w] {
                return w->click({ 100, 400 });
            },
            2 },
        { "a flick to the left goes forward",
            [w] {
                return w->flick({ 450, 400 }, { 150, 420 });
            },
            3 },
        { "a flick to the right goes back",
            [w] {
                return w->flick({ 150, 400 }, { 450, 380 });
            },
            2 },
        { "Page Up goes back", [w] { return w->key(QStringLiteral("Prior")); }, 1 },
        { "three times forward", [w] { return w->key(QStringLiteral("Right Right Right")); }, 4 },
    };
    for (const Step& step : steps) {
        QVERIFY2(step.act(), qPrintable(window->error()));
        QTRY_COMPARE_WITH_TIMEOUT(shownPage(window->title()), step.page, 5000);
    }

    // The window shows the fourth page: not blank, and not the first.
    const QImage fourthPage = window->screenshot();
    QVERIFY2(!fourthPage.isNull(), qPrintable(window->error()));
    QCOMPARE(fourthPage.size(), QSize(600, 800));
    fourthPage.save(QDir::current().filePath(QStringLiteral("readwindow.png")));
    QVERIFY2(inkedShare(fourthPage) > 0.3, "the window looks blank");
    QVERIFY2(differingShare(firstPage, fourthPage) > 0.3, "the window did not change its page");

    QVERIFY(window->key(QStringLiteral("Escape")));
    QCOMPARE(window->waitForExit(), 0);

    const QJsonObject book = listed(sample);
    QCOMPARE(book.value(QStringLiteral("bookmarkedPageId")).toString(), pageIds.at(3));
    QCOMPARE(book.value(QStringLiteral("percentRead")).toInt(), 60);
    QCOMPARE(book.value(QStringLiteral("readStatus")).toInt(), 1);
}

void TestReadWindow::reopensWhereReadingStoppedAndClosesAtTheEnd()
{
    savePosition(3);

    const std::unique_ptr<ReadWindowDriver> window = read(sample);
    QTRY_COMPARE(shownPage(window->title()), 4);
    QVERIFY(window->key(QStringLiteral("Right")));
    QTRY_COMPARE(shownPage(window->title()), 5);

    // Past the last page the book is finished and the window closes itself.
    QVERIFY(window->key(QStringLiteral("Right")));
    QCOMPARE(window->waitForExit(), 0);

    const QJsonObject book = listed(sample);
    QCOMPARE(book.value(QStringLiteral("bookmarkedPageId")).toString(), pageIds.at(0));
    QCOMPARE(book.value(QStringLiteral("percentRead")).toInt(), 0);
    QCOMPARE(book.value(QStringLiteral("readStatus")).toInt(), 2);
}

void TestReadWindow::middleTapMenuDogEarsThePage()
{
    savePosition(2);

    const std::unique_ptr<ReadWindowDriver> window = read(sample);
    QTRY_COMPARE(shownPage(window->title()), 3);
    // The menu's first entry is the dog ear; Escape then closes the window.
    QVERIFY(window->click({ 300, 400 }));
    QVERIFY(window->key(QStringLiteral("Down Return Escape")));
    QCOMPARE(window->waitForExit(), 0);

    QVERIFY(Library::open(environment.value(QStringLiteral("TAMBER_LIBRARY"))));
    QStringList dogEars;
    for (const Bookmark& dogEar : Library::dogEars(sample))
        dogEars << dogEar.getExtraData();
    Library::close();
    QCOMPARE(dogEars, QStringList { QStringLiteral("2") });
}

void TestReadWindow::undecodablePageEndsTheProgramWithStatus1()
{
    const QString broken = dir.filePath(QStringLiteral("broken.cbz"));
    QVERIFY(TestSupport::writeZip(broken,
        { { "p1.png", TestSupport::encode(TestSupport::makePage(60, 90), "PNG") },
            { "p2.png", QByteArray("no image at all") } }));
    int status = -1;
    tamber({ QStringLiteral("import"), broken }, &status);
    QCOMPARE(status, 0);

    const std::unique_ptr<ReadWindowDriver> window = read(broken);
    QTRY_COMPARE(shownPage(window->title()), 1);
    QVERIFY(window->key(QStringLiteral("Right")));
    QCOMPARE(window->waitForExit(), 1);
    QVERIFY(window->standardError().contains("could not be shown"));
}

QTEST_GUILESS_MAIN(TestReadWindow)
#include "tst_readwindow.moc"
