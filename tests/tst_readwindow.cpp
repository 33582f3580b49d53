// SPDX-License-Identifier: MIT
// Reading in a real window: "tamber read" on a shared sample under an X
// server, driven by key presses and clicks through xdotool as a person would
// drive it, pictured through the X server, and the library file checked
// afterwards.

#include "Library.h"
#include "TestSupport.h"

#include <QDir>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using TestSupport::Tamber;

namespace {

// Runs a tool to its end; its standard output, or a null array when it failed.
QByteArray runTool(const QString& tool, const QStringList& arguments)
{
    QProcess process;
    process.start(tool, arguments);
    if (!process.waitForFinished(15000)) {
        process.kill();
        process.waitForFinished();
        return QByteArray();
    }
    const QByteArray out = process.readAllStandardOutput();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qWarning("%s %s failed: %s", qPrintable(tool), qPrintable(arguments.join(' ')),
            process.readAllStandardError().constData());
        return QByteArray();
    }
    return out.isNull() ? QByteArray("") : out;
}

// The window of a running "tamber read", found by its process.
class ReadWindow
{
public:
    ReadWindow(const Tamber& tamber, const QString& book)
    {
        m_program.setProcessEnvironment(tamber.environment);
        m_program.start(TestSupport::binDir() + QStringLiteral("/tamber"),
            { QStringLiteral("read"), book, QStringLiteral("--size"), QStringLiteral("600x800") });
        if (m_program.waitForStarted())
            m_id = QString::fromUtf8(xdotool({ QStringLiteral("search"), QStringLiteral("--sync"),
                                         QStringLiteral("--onlyvisible"), QStringLiteral("--pid"),
                                         QString::number(m_program.processId()) }))
                       .section(QLatin1Char('\n'), 0, 0);
    }
    ~ReadWindow()
    {
        m_program.kill();
        m_program.waitForFinished();
    }

    // The page number that the title shows, 0 when it shows none.
    int shownPage() const
    {
        static const QRegularExpression footer(QStringLiteral("page (\\d+) of \\d+$"));
        return footer.match(title()).captured(1).toInt();
    }
    QString title() const
    {
        return QString::fromUtf8(xdotool({ QStringLiteral("getwindowname"), m_id })).trimmed();
    }
    // Key names as xdotool takes them (Right, Next, Escape), blank-separated.
    bool key(const QString& names) const
    {
        return !xdotool(QStringList { QStringLiteral("key") } + names.split(QLatin1Char(' ')))
                    .isNull();
    }
    // Presses at from and releases at to at once, in the window's coordinates.
    bool click(const QPoint& from, const QPoint& to = QPoint(-1, -1)) const
    {
        const auto moveTo = [this](const QPoint& at) {
            return QStringList { QStringLiteral("mousemove"), QStringLiteral("--window"), m_id,
                QString::number(at.x()), QString::number(at.y()) };
        };
        if (to.x() < 0)
            return !xdotool(moveTo(from) << QStringLiteral("click") << QStringLiteral("1"))
                        .isNull();
        return !xdotool(moveTo(from)
            << QStringLiteral("mousedown") << QStringLiteral("1") << moveTo(to)
            << QStringLiteral("mouseup") << QStringLiteral("1"))
                    .isNull();
    }
    QImage screenshot() const
    {
        return QGuiApplication::primaryScreen()->grabWindow(m_id.toULongLong()).toImage();
    }
    // The exit status, or -1 when the program still runs after 10 s.
    int waitForExit()
    {
        if (!m_program.waitForFinished(10000) && m_program.state() != QProcess::NotRunning)
            return -1;
        return m_program.exitStatus() == QProcess::NormalExit ? m_program.exitCode() : -1;
    }
    QByteArray standardError() { return m_program.readAllStandardError(); }
    bool isShown() const { return !m_id.isEmpty(); }

private:
    QByteArray xdotool(const QStringList& arguments) const
    {
        return runTool(QStringLiteral("xdotool"), arguments);
    }

    QProcess m_program;
    QString m_id;
};

// Share of the pixels that are not near white, and that differ between two
// pictures of one size.
double inkedShare(const QImage& image, const QImage& other = QImage())
{
    qint64 counted = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            counted += other.isNull() ? qGray(image.pixel(x, y)) < 230
                                      : image.pixel(x, y) != other.pixel(x, y);
    }
    return double(counted) / (qint64(image.width()) * image.height());
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
    void undecodablePageEndsTheProgramWithStatus1_data();
    void undecodablePageEndsTheProgramWithStatus1();

private:
    // Stores the reading position at a 0-based page, as a reading before would have.
    void savePosition(int page);
    // The book as the library file now holds it.
    Volume stored();

    QTemporaryDir dir;
    std::unique_ptr<Tamber> tamber;
    QString sample;
    QStringList pageIds;
};

void TestReadWindow::initTestCase()
{
    TAMBER_REQUIRE_SAMPLES();
    QVERIFY(dir.isValid());
    tamber = std::make_unique<Tamber>(dir.path());
    // On X whatever the environment says: xdotool finds only X windows.
    tamber->environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));

    sample = TestSupport::sampleCbz();
    QCOMPARE(tamber->run({ QStringLiteral("import"), sample }).status, 0);
    QVERIFY(Library::open(tamber->library()));
    for (const Pagelet& page : Library::pages(sample))
        pageIds << page.getId();
    Library::close();
    QCOMPARE(pageIds.size(), 5);
}

void TestReadWindow::savePosition(int page)
{
    QVERIFY(Library::open(tamber->library()));
    QVERIFY(Library::updateBookmark(
        sample, pageIds.at(page), 100 * page / 5, QDateTime::currentDateTimeUtc()));
    Library::close();
}

Volume TestReadWindow::stored()
{
    Library::open(tamber->library());
    const Volume book = Library::book(sample);
    Library::close();
    return book;
}

void TestReadWindow::keysClicksAndFlicksTurnPagesAndEscapeSaves()
{
    savePosition(0);
    ReadWindow window(*tamber, sample);
    QVERIFY(window.isShown());
    QTRY_COMPARE(window.shownPage(), 1);
    QVERIFY(window.title().startsWith(QStringLiteral("Captain Science #001 - ")));
    const QImage firstPage = window.screenshot();
    QVERIFY(!firstPage.isNull());

    // The screen is 600 wide: its thirds part at 200 and 400.
    QVERIFY(window.key(QStringLiteral("Right")));
    QTRY_COMPARE(window.shownPage(), 2);
    QVERIFY(window.key(QStringLiteral("Next")));
    QTRY_COMPARE(window.shownPage(), 3);
    QVERIFY(window.key(QStringLiteral("Left")));
    QTRY_COMPARE(window.shownPage(), 2);
    QVERIFY2(window.click({ 500, 400 }), "a click in the right third goes forward");
    QTRY_COMPARE(window.shownPage(), 3);
    QVERIFY2(window.click({ 100, 400 }), "a click in the left third goes back");
    QTRY_COMPARE(window.shownPage(), 2);
    QVERIFY2(window.click({ 450, 400 }, { 150, 420 }), "a flick to the left goes forward");
    QTRY_COMPARE(window.shownPage(), 3);
    QVERIFY2(window.click({ 150, 400 }, { 450, 380 }), "a flick to the right goes back");
    QTRY_COMPARE(window.shownPage(), 2);
    QVERIFY(window.key(QStringLiteral("Prior")));
    QTRY_COMPARE(window.shownPage(), 1);
    QVERIFY(window.key(QStringLiteral("Right Right Right")));
    QTRY_COMPARE(window.shownPage(), 4);

    // The window shows the fourth page: not blank, and not the first.
    const QImage fourthPage = window.screenshot();
    QCOMPARE(fourthPage.size(), QSize(600, 800));
    fourthPage.save(QDir::current().filePath(QStringLiteral("readwindow.png")));
    QVERIFY2(inkedShare(fourthPage) > 0.3, "the window looks blank");
    QVERIFY2(inkedShare(firstPage, fourthPage) > 0.3, "the window did not change its page");

    QVERIFY(window.key(QStringLiteral("Escape")));
    QCOMPARE(window.waitForExit(), 0);
    const Volume book = stored();
    QCOMPARE(book.bookmarkedPageId(), pageIds.at(3));
    QCOMPARE(book.percentRead(), 60);
    QCOMPARE(book.readStatus(), 1);
}

void TestReadWindow::reopensWhereReadingStoppedAndClosesAtTheEnd()
{
    savePosition(3);
    ReadWindow window(*tamber, sample);
    QTRY_COMPARE(window.shownPage(), 4);
    QVERIFY(window.key(QStringLiteral("Right")));
    QTRY_COMPARE(window.shownPage(), 5);

    // Past the last page the book is finished and the window closes itself.
    QVERIFY(window.key(QStringLiteral("Right")));
    QCOMPARE(window.waitForExit(), 0);
    const Volume book = stored();
    QCOMPARE(book.bookmarkedPageId(), pageIds.at(0));
    QCOMPARE(book.percentRead(), 0);
    QCOMPARE(book.readStatus(), 2);
}

void TestReadWindow::middleTapMenuDogEarsThePage()
{
    savePosition(2);
    ReadWindow window(*tamber, sample);
    QTRY_COMPARE(window.shownPage(), 3);
    // The menu's first entry is the dog ear; Escape then closes the window.
    QVERIFY(window.click({ 300, 400 }));
    QVERIFY(window.key(QStringLiteral("Down Return Escape")));
    QCOMPARE(window.waitForExit(), 0);

    QVERIFY(Library::open(tamber->library()));
    const QList<Bookmark> dogEars = Library::dogEars(sample);
    Library::close();
    QCOMPARE(dogEars.size(), 1);
    QCOMPARE(dogEars.first().getExtraData(), QStringLiteral("2"));
}

void TestReadWindow::undecodablePageEndsTheProgramWithStatus1_data()
{
    QTest::addColumn<int>("broken"); // 1-based
    QTest::addColumn<int>("shown"); // the page shown before it, 0 for none

    QTest::newRow("the first page") << 1 << 0;
    QTest::newRow("a page turned to") << 2 << 1;
}

// The view closes, nothing is saved: the book reopens where it did before,
// and one that showed no page is not marked as being read.
void TestReadWindow::undecodablePageEndsTheProgramWithStatus1()
{
    QFETCH(int, broken);
    QFETCH(int, shown);
    const QByteArray page = TestSupport::encode(TestSupport::makePage(60, 90), "PNG");
    QList<TestSupport::ZipEntry> entries { { "p1.png", page }, { "p2.png", page } };
    entries[broken - 1].second = "no image at all";
    const QString book = dir.filePath(QStringLiteral("broken%1.cbz").arg(broken));
    QVERIFY(TestSupport::writeZip(book, entries));
    QCOMPARE(tamber->run({ QStringLiteral("import"), book }).status, 0);

    for (int run = 0; run < 2; ++run) {
        ReadWindow window(*tamber, book);
        if (shown) {
            QTRY_COMPARE(window.shownPage(), shown);
            QVERIFY(window.key(QStringLiteral("Right")));
        }
        QCOMPARE(window.waitForExit(), 1);
        QVERIFY(window.standardError().contains("could not be shown"));
    }
    QVERIFY(Library::open(tamber->library()));
    const Volume stored = Library::book(book);
    Library::close();
    QCOMPARE(stored.bookmarkedPageId(), QString());
    QCOMPARE(stored.readStatus(), 0);
}

// The test's own screenshots need X too.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    TestReadWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_readwindow.moc"
