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

// Runs xdotool to its end; its standard output, or a null array when it failed.
QByteArray xdotool(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    if (!process.waitForFinished(15000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        qWarning("xdotool %s failed: %s", qPrintable(arguments.join(' ')),
            process.readAllStandardError().constData());
        return QByteArray();
    }
    const QByteArray out = process.readAllStandardOutput();
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
    // Keys as xdotool names them ("key Right Next"), or a click or a flick in
    // the window's coordinates ("click 500,400"; "flick 450,400 150,420" presses
    // at the first point and releases at once at the second).
    bool act(const QString& action) const
    {
        QStringList words = action.split(QLatin1Char(' '));
        if (words.first() == QLatin1String("key"))
            return !xdotool(words).isNull();
        const bool flick = words.takeFirst() == QLatin1String("flick");
        QStringList arguments;
        for (const QString& at : words) {
            arguments << QStringLiteral("mousemove") << QStringLiteral("--window") << m_id
                      << at.split(QLatin1Char(','))
                      << (!flick                       ? QStringLiteral("click")
                                 : at == words.first() ? QStringLiteral("mousedown")
                                                       : QStringLiteral("mouseup"))
                      << QStringLiteral("1");
        }
        return !xdotool(arguments).isNull();
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
    QProcess m_program;
    QString m_id;
};

} // namespace

class TestReadWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void readingTurnsSavesDogEarsAndFinishes();
    void undecodablePageEndsTheProgramWithStatus1_data();
    void undecodablePageEndsTheProgramWithStatus1();

private:
    // The book as the library file now holds it, and its dog ears.
    Volume stored(const QString& book, QList<Bookmark>* dogEars = nullptr);

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
    // A reading before stopped on the first page.
    QVERIFY(Library::updateBookmark(sample, pageIds.value(0), 0, QDateTime::currentDateTimeUtc()));
    Library::close();
    QCOMPARE(pageIds.size(), 5);
}

Volume TestReadWindow::stored(const QString& book, QList<Bookmark>* dogEars)
{
    Library::open(tamber->library());
    const Volume volume = Library::book(book);
    if (dogEars)
        *dogEars = Library::dogEars(book);
    Library::close();
    return volume;
}

void TestReadWindow::readingTurnsSavesDogEarsAndFinishes()
{
    {
        ReadWindow window(*tamber, sample);
        QVERIFY(window.isShown());
        QTRY_COMPARE(window.shownPage(), 1);
        QVERIFY(window.title().startsWith(QStringLiteral("Captain Science #001 - ")));
        const QImage firstPage = window.screenshot();
        QVERIFY(!firstPage.isNull());

        // Each action and the page it leads to. The screen is 600 wide: its
        // thirds part at 200 and 400. Clicks in the right third and flicks to
        // the left go forward, those in the left third and to the right back.
        const QList<QPair<QString, int>> steps = {
            { "key Right", 2 },
            { "key Next", 3 },
            { "key Left", 2 },
            { "click 500,400", 3 },
            { "click 100,400", 2 },
            { "flick 450,400 150,420", 3 },
            { "flick 150,400 450,380", 2 },
            { "key Prior", 1 },
            { "key Right Right Right", 4 },
        };
        for (const auto& step : steps) {
            QVERIFY2(window.act(step.first), qPrintable(step.first));
            QTRY_COMPARE(window.shownPage(), step.second);
        }

        // The window shows the fourth page: not blank, and not the first.
        const QImage fourthPage = window.screenshot();
        QCOMPARE(fourthPage.size(), QSize(600, 800));
        fourthPage.save(QDir::current().filePath(QStringLiteral("readwindow.png")));
        // A page differs from white, and from another page, by some 50 a channel.
        QImage white(fourthPage.size(), QImage::Format_RGB32);
        white.fill(qRgb(255, 255, 255));
        QVERIFY2(TestSupport::meanDifference(fourthPage, white) > 20, "the window looks blank");
        QVERIFY2(TestSupport::meanDifference(firstPage, fourthPage) > 15,
            "the window did not change its page");

        // Escape closes the window and saves the page.
        QVERIFY(window.act("key Escape"));
        QCOMPARE(window.waitForExit(), 0);
    }
    Volume book = stored(sample);
    QCOMPARE(book.bookmarkedPageId(), pageIds.at(3));
    QCOMPARE(book.percentRead(), 60);
    QCOMPARE(book.readStatus(), 1);

    {
        // Reopened where reading stopped. A click in the middle third opens
        // the menu, whose first entry is the dog ear.
        ReadWindow window(*tamber, sample);
        QTRY_COMPARE(window.shownPage(), 4);
        QVERIFY(window.act("key Right"));
        QTRY_COMPARE(window.shownPage(), 5);
        QVERIFY(window.act("click 300,400"));
        QVERIFY(window.act("key Down Return"));
        // Past the last page the book is finished and the window closes itself.
        QVERIFY(window.act("click 500,400"));
        QCOMPARE(window.waitForExit(), 0);
    }
    QList<Bookmark> dogEars;
    book = stored(sample, &dogEars);
    QCOMPARE(book.bookmarkedPageId(), pageIds.at(0));
    QCOMPARE(book.percentRead(), 0);
    QCOMPARE(book.readStatus(), 2);
    QCOMPARE(dogEars.size(), 1);
    QCOMPARE(dogEars.first().getExtraData(), QStringLiteral("4"));
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
            QVERIFY(window.act("key Right"));
        }
        QCOMPARE(window.waitForExit(), 1);
        QVERIFY(window.standardError().contains("could not be shown"));
    }
    QCOMPARE(stored(book).bookmarkedPageId(), QString());
    QCOMPARE(stored(book).readStatus(), 0);
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
