// SPDX-License-Identifier: MIT
// tamber session and tamber render end to end. Each script in sessions/ runs
// against a fresh library; its trace must equal the .expected file beside it,
// with the samples' folder, the temporary folder and the times masked.
// TAMBER_UPDATE_TRACES=1 rewrites the expected traces from the actual ones.

#include "HostCompat.h"
#include "TestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QImage>
#include <QRegExp>
#include <QtTest>

#include <memory>

using TestSupport::Tamber;

class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void traceMatchesExpected_data();
    void traceMatchesExpected();
    void renderPaintsWhatTheSessionShows();
    void renderFailuresExitWithStatus1_data();
    void renderFailuresExitWithStatus1();

private:
    // The trace of tamber session with these arguments, masked; status and
    // standard error set.
    QByteArray session(const QStringList& arguments, const QByteArray& input, int* status);
    QByteArray script(const QString& name) const;
    QString path(const QString& name) const { return m_dir->filePath(name); }

    std::unique_ptr<TestSupport::TemporaryDir> m_dir;
    std::unique_ptr<Tamber> m_tamber;
    QByteArray m_err;
    QDateTime m_started;
};

static const QString sessionsDir = QStringLiteral(TAMBER_TESTS_SOURCE_DIR "/sessions/");

void TestSession::init()
{
    m_started = QDateTime::currentDateTimeUtc();
    m_dir = std::make_unique<TestSupport::TemporaryDir>();
    m_tamber = std::make_unique<Tamber>(m_dir->path());

    // What the scripts open. The pages of ten and one are half as wide as the
    // 1072 x 1448 screen and as tall: zoomed 2 times, a page is as wide as the
    // screen and twice its height. Three has square pages; wide is a picture
    // wider than tall, broken one that is none; notes is a comic without images.
    // Link is another way into the folder.
    QVERIFY(TestSupport::writeComic(path("ten.cbz"), 10, QSize(536, 1448)));
    QVERIFY(TestSupport::writeComic(path("one.cbz"), 1, QSize(536, 1448)));
    QVERIFY(TestSupport::writeComic(path("three.cbz"), 3, QSize(500, 500)));
    QVERIFY(TestSupport::makePage(300, 200).save(path("wide.png")));
    QVERIFY(TestSupport::writeFile(path("broken.png"), "not an image"));
    QVERIFY(TestSupport::writeZip(path("notes.cbz"), { { "a.txt", "x" } }));
    QVERIFY(QFile::link(m_dir->path(), path("link")));
}

// Times from the start of the case on (those of the files it made, those
// taken while tamber ran) become $NOW, other times (the samples' dates) $DATE.
QByteArray TestSession::session(const QStringList& arguments, const QByteArray& input, int* status)
{
    const Tamber::Run run = m_tamber->run(QStringList { "session" } + arguments, input);
    const QDateTime finished = QDateTime::currentDateTimeUtc();
    *status = run.status;
    m_err = run.err;

    // Folders appear as paths and, in image ids, with their separators as "_".
    QString text = QString::fromUtf8(run.out);
    const auto mask = [&text](const QString& folder, const QString& name) {
        if (folder.isEmpty())
            return;
        text.replace(folder, name);
        QString imageId = folder;
        for (const char separator : { '/', ':', '.', ' ' })
            imageId.replace(QLatin1Char(separator), QLatin1Char('_'));
        text.replace(imageId, name);
    };
    mask(TestSupport::samplesDir(), "$SAMPLES");
    mask(m_dir->path(), "$TMP");

    static const QRegExp time(
        QStringLiteral("\"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z\""));
    for (int at = time.indexIn(text); at >= 0; at = time.indexIn(text, at)) {
        QDateTime date = QDateTime::fromString(
            text.mid(at + 1, 23), QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz"));
        date.setTimeSpec(Qt::UTC);
        const bool now
            = date.isValid() && date.addSecs(1) >= m_started && date.addSecs(-1) <= finished;
        text.replace(at, time.matchedLength(), now ? "\"$NOW\"" : "\"$DATE\"");
    }
    return text.toUtf8();
}

// The script with its folders filled in.
QByteArray TestSession::script(const QString& name) const
{
    QByteArray text = TestSupport::readFile(sessionsDir + name);
    text.replace("$SAMPLES", TestSupport::samplesDir().toUtf8());
    text.replace("$TMP", m_dir->path().toUtf8());
    return text;
}

void TestSession::traceMatchesExpected_data()
{
    QTest::addColumn<QString>("name");

    const QStringList scripts
        = QDir(sessionsDir).entryList({ "*.script" }, QDir::Files, QDir::Name);
    QVERIFY(!scripts.isEmpty());
    for (const QString& file : scripts)
        QTest::newRow(qPrintable(file.left(file.size() - 7))) << file.left(file.size() - 7);
}

void TestSession::traceMatchesExpected()
{
    QFETCH(QString, name);
    if (TestSupport::readFile(sessionsDir + name + ".script").contains("$SAMPLES"))
        TAMBER_REQUIRE_SAMPLES();

    // From a file here; the other cases give their scripts on standard input.
    const QString file = path(name + ".script");
    QVERIFY(TestSupport::writeFile(file, script(name + ".script")));
    int status = -1;
    const QByteArray actual = session({ file }, QByteArray(), &status);
    QVERIFY2(m_err.isEmpty(), m_err.constData());
    const QString expectedFile = sessionsDir + name + ".expected";
    if (qEnvironmentVariableIsSet("TAMBER_UPDATE_TRACES"))
        QVERIFY(TestSupport::writeFile(expectedFile, actual));

    const QList<QByteArray> expectedLines = TestSupport::readFile(expectedFile).split('\n');
    const QList<QByteArray> actualLines = actual.split('\n');
    for (int i = 0; i < qMax(expectedLines.size(), actualLines.size()); ++i) {
        const QByteArray expected = TestSupport::traceLine(expectedLines.value(i, "(no line)"));
        const QByteArray line = actualLines.value(i, "(no line)");
        QVERIFY2(line == expected,
            qPrintable(QStringLiteral("trace line %1 differs\n   actual: %2\n expected: %3")
                           .arg(i + 1)
                           .arg(QString::fromUtf8(line), QString::fromUtf8(expected))));
    }
    // The exit status tells whether any line failed.
    QCOMPARE(status, actual.contains("{\"error\":") ? 1 : 0);
}

// A square page on a tall screen leaves margins above and below it, which
// only the paint after a decode fills white: a plain repaint leaves them be.
// tamber render paints what the session shows.
void TestSession::renderPaintsWhatTheSessionShows()
{
    const QByteArray book = path("three.cbz").toUtf8();
    const auto shot
        = [this](const char* name) { return "screenshot \"" + path(name).toUtf8() + "\"\n"; };
    const QByteArray commands = "import \"" + book + "\"\nopen \"" + book + "\"\ngoto 1\npaint\n"
        + shot("first.png") + "paint\n" + shot("again.png") + "zoom 1.5\npaint\n"
        + shot("zoomed.png") + "zoom 2\n" + shot("zoomed-at-once.png");
    int status = -1;
    session({ "--size", "240x320" }, commands, &status);
    QCOMPARE(status, 0);
    const auto image = [this](const char* name) {
        return QImage(path(name)).convertToFormat(QImage::Format_RGB32);
    };
    const QImage first = image("first.png");
    QCOMPARE(first.size(), QSize(240, 320));
    QCOMPARE(first.pixel(120, 2), qRgb(255, 255, 255));
    QCOMPARE(image("again.png"), first);

    const Tamber::Run render = m_tamber->run({ "render", QString::fromUtf8(book), "--page", "2",
        "--zoom", "1.5", "--size", "240x320", "-o", path("rendered.png") });
    QCOMPARE(render.status, 0);
    QVERIFY2(render.err.isEmpty(), render.err.constData());
    const QImage zoomed = image("zoomed.png");
    QVERIFY(zoomed != first);
    QCOMPARE(image("rendered.png"), zoomed);

    // A zoom repaints the view at once: the screenshot shows it with no paint.
    const Tamber::Run twice = m_tamber->run({ "render", QString::fromUtf8(book), "--page", "2",
        "--zoom", "2", "--size", "240x320", "-o", path("rendered-twice.png") });
    QCOMPARE(twice.status, 0);
    QCOMPARE(image("zoomed-at-once.png"), image("rendered-twice.png"));
}

void TestSession::renderFailuresExitWithStatus1_data()
{
    QTest::addColumn<QString>("book");
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("cause");

    QTest::newRow("a book that is not in the library") << "nowhere.cbz" << 1 << "no such book";
    QTest::newRow("a page past the end") << "comic.cbz" << 3 << "no page 3";
    QTest::newRow("a page that cannot be decoded") << "comic.cbz" << 2 << "cannot be decoded";
    QTest::newRow("a book whose file is gone") << "gone.cbz" << 1 << "the file is gone";
}

void TestSession::renderFailuresExitWithStatus1()
{
    QFETCH(QString, book);
    QFETCH(int, page);
    QFETCH(QString, cause);
    QVERIFY(TestSupport::writeZip(path("comic.cbz"),
        { { "p1.png", TestSupport::encode(TestSupport::makePage(60, 80), "PNG") },
            { "p2.png", TestSupport::pngHeaderOnly(QSize(60, 80)) } }));
    QVERIFY(QFile::copy(path("comic.cbz"), path("gone.cbz")));
    QCOMPARE(m_tamber->run({ "import", path("comic.cbz"), path("gone.cbz") }).status, 0);
    QVERIFY(QFile::remove(path("gone.cbz")));

    const Tamber::Run run = m_tamber->run(
        { "render", path(book), "--page", QString::number(page), "-o", path("page.png") });
    QCOMPARE(run.status, 1);
    QVERIFY2(run.err.contains(cause.toUtf8()), run.err.constData());
    QVERIFY(!QFile::exists(path("page.png")));
}

TAMBER_TEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
