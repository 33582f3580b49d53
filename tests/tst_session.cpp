// tamber session and tamber render end to end. Each script in sessions/ runs
// against a fresh library; its trace must equal the .expected file beside it,
// with the samples' folder, the temporary folder and the times masked.
// TAMBER_UPDATE_TRACES=1 rewrites the expected traces from the actual ones.

#include "TestSupport.h"

#include <QDateTime>
#include <QDir>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

struct Run
{
    int status = -1;
    QByteArray out;
    QByteArray err;
    QDateTime started;
    QDateTime finished;
};

QString sessionsDir()
{
    return QStringLiteral(TAMBER_TESTS_SOURCE_DIR "/sessions");
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void traceMatchesExpected_data();
    void traceMatchesExpected();
    void scriptFileAndStandardInputGiveTheSameTrace();
    void usageErrorsExitWithStatus2_data();
    void usageErrorsExitWithStatus2();
    void screenshotIsTheViewAsPainted();

    void renderWritesThePageAtTheScreenSize();
    void renderPaintsWhatTheSessionShows();
    void renderFailuresExitWithStatus1_data();
    void renderFailuresExitWithStatus1();

private:
    Run tamber(const QStringList& arguments, const QByteArray& input = QByteArray());
    QByteArray script(const QString& name) const;
    QByteArray masked(const Run& run) const;
    QString path(const QString& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QProcessEnvironment m_environment;
};

void TestSession::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
    m_environment.insert(QStringLiteral("XDG_DATA_HOME"), path(QStringLiteral("data")));
    m_environment.insert(QStringLiteral("TAMBER_LIBRARY"), path(QStringLiteral("library.sqlite")));
    m_environment.remove(QStringLiteral("TAMBER_PLUGIN"));
    m_environment.remove(QStringLiteral("QT_LOGGING_RULES"));
    // Without it Qt warns on standard error, which the cases check is empty.
    const QString runtime = path(QStringLiteral("runtime"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);

    // Images that the scripts open: a page wider than tall, and one that is none.
    QVERIFY(TestSupport::makePage(300, 200).save(path(QStringLiteral("wide.png"))));
    QVERIFY(writeFile(path(QStringLiteral("broken.png")), "not an image"));
}

Run TestSession::tamber(const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setWorkingDirectory(m_dir->path());
    Run run;
    run.started = QDateTime::currentDateTimeUtc();
    process.start(TestSupport::binDir() + QStringLiteral("/tamber"), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.finished = QDateTime::currentDateTimeUtc();
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// The script with its folders filled in.
QByteArray TestSession::script(const QString& name) const
{
    QByteArray text = contents(sessionsDir() + QLatin1Char('/') + name);
    text.replace("$SAMPLES", TestSupport::samplesDir().toUtf8());
    text.replace("$TMP", m_dir->path().toUtf8());
    return text;
}

// Times taken while tamber ran become $NOW, other times (file dates) $DATE.
QByteArray TestSession::masked(const Run& run) const
{
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
    mask(TestSupport::samplesDir(), QStringLiteral("$SAMPLES"));
    mask(m_dir->path(), QStringLiteral("$TMP"));

    static const QRegularExpression time(
        QStringLiteral("\"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z\""));
    QString result;
    int last = 0;
    auto match = time.globalMatch(text);
    while (match.hasNext()) {
        const QRegularExpressionMatch found = match.next();
        const QDateTime date
            = QDateTime::fromString(found.captured().mid(1, 24), Qt::ISODateWithMs);
        const bool now
            = date.isValid() && date.addSecs(1) >= run.started && date.addSecs(-1) <= run.finished;
        result += text.mid(last, found.capturedStart() - last);
        result += now ? QStringLiteral("\"$NOW\"") : QStringLiteral("\"$DATE\"");
        last = found.capturedEnd();
    }
    result += text.mid(last);
    return result.toUtf8();
}

void TestSession::traceMatchesExpected_data()
{
    QTest::addColumn<QString>("name");

    const QStringList scripts
        = QDir(sessionsDir()).entryList({ QStringLiteral("*.script") }, QDir::Files, QDir::Name);
    QVERIFY(!scripts.isEmpty());
    for (const QString& file : scripts) {
        const QString name = file.chopped(7);
        QTest::newRow(qPrintable(name)) << name;
    }
}

void TestSession::traceMatchesExpected()
{
    QFETCH(QString, name);
    const QByteArray text = contents(sessionsDir() + QLatin1Char('/') + name + ".script");
    if (text.contains("$SAMPLES"))
        TAMBER_REQUIRE_SAMPLES();

    const Run run = tamber({ QStringLiteral("session") }, script(name + ".script"));
    QVERIFY2(run.err.isEmpty(), run.err.constData());
    const QByteArray actual = masked(run);
    const QString expectedFile = sessionsDir() + QLatin1Char('/') + name + ".expected";
    if (qEnvironmentVariableIsSet("TAMBER_UPDATE_TRACES"))
        QVERIFY(writeFile(expectedFile, actual));

    const QList<QByteArray> expectedLines = contents(expectedFile).split('\n');
    const QList<QByteArray> actualLines = actual.split('\n');
    for (int i = 0; i < qMax(expectedLines.size(), actualLines.size()); ++i) {
        const QByteArray expected = expectedLines.value(i, "(no line)");
        const QByteArray line = actualLines.value(i, "(no line)");
        QVERIFY2(line == expected,
            qPrintable(QStringLiteral("trace line %1 differs\n   actual: %2\n expected: %3")
                           .arg(i + 1)
                           .arg(QString::fromUtf8(line), QString::fromUtf8(expected))));
    }
    // The exit status tells whether any line failed.
    QCOMPARE(run.status, actual.contains("{\"error\":") ? 1 : 0);
}

void TestSession::scriptFileAndStandardInputGiveTheSameTrace()
{
    TAMBER_REQUIRE_SAMPLES();
    const QString file = path(QStringLiteral("errors.script"));
    QVERIFY(writeFile(file, script(QStringLiteral("errors.script"))));

    const Run fromFile = tamber({ QStringLiteral("session"), file });
    QCOMPARE(fromFile.status, 1);
    QVERIFY(QFile::remove(path(QStringLiteral("library.sqlite"))));
    const Run fromInput = tamber({ QStringLiteral("session") }, contents(file));
    QCOMPARE(masked(fromInput), masked(fromFile));
}

void TestSession::usageErrorsExitWithStatus2_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("session with two scripts") << QStringList { "session", "a", "b" };
    QTest::newRow("session with a size without height")
        << QStringList { "session", "--size", "800" };
    QTest::newRow("session with an empty screen") << QStringList { "session", "--size", "0x600" };
    QTest::newRow("render without an output file") << QStringList { "render", "a.cbz" };
    QTest::newRow("render of page 0")
        << QStringList { "render", "a.cbz", "--page", "0", "-o", "x.png" };
    QTest::newRow("render at zoom 0")
        << QStringList { "render", "a.cbz", "--zoom", "0", "-o", "x.png" };
    QTest::newRow("render turned by 5")
        << QStringList { "render", "a.cbz", "--orientation", "5", "-o", "x.png" };
}

void TestSession::usageErrorsExitWithStatus2()
{
    QFETCH(QStringList, arguments);

    const Run run = tamber(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY(run.out.isEmpty());
    QVERIFY(!run.err.isEmpty());
}

void TestSession::screenshotIsTheViewAsPainted()
{
    // The 300x200 page is turned on its side to 200x300 and centred on white
    // in a 240x300 screen: a margin of 20 pixels each side.
    const QString shot = path(QStringLiteral("shot.png"));
    const QByteArray commands = "open-image \"" + path(QStringLiteral("wide.png")).toUtf8()
        + "\"\npaint\nscreenshot \"" + shot.toUtf8() + "\"\n";
    const Run run
        = tamber({ QStringLiteral("session"), QStringLiteral("--size"), QStringLiteral("240x300") },
            commands);
    QCOMPARE(run.status, 0);

    const QImage image(shot);
    QCOMPARE(image.size(), QSize(240, 300));
    QCOMPARE(QColor(image.pixel(5, 150)), QColor(Qt::white));
    QCOMPARE(QColor(image.pixel(234, 150)), QColor(Qt::white));
    QCOMPARE(QColor(image.pixel(120, 150)), QColor(240, 240, 230));
}

void TestSession::renderWritesThePageAtTheScreenSize()
{
    TAMBER_REQUIRE_SAMPLES();
    QCOMPARE(tamber({ QStringLiteral("import"), TestSupport::sampleCbz() }).status, 0);

    const QString output = path(QStringLiteral("page.jpg"));
    const Run run = tamber({ QStringLiteral("render"), TestSupport::sampleCbz(),
        QStringLiteral("--page"), QStringLiteral("5"), QStringLiteral("--size"),
        QStringLiteral("300x400"), QStringLiteral("-o"), output });
    QCOMPARE(run.status, 0);
    QVERIFY2(run.err.isEmpty(), run.err.constData());
    QCOMPARE(QImageReader(output).format(), QByteArray("jpeg"));
    const QImage image(output);
    QCOMPARE(image.size(), QSize(300, 400));
    // A scanned page is neither blank nor one colour.
    QVERIFY(
        image.pixel(150, 200) != image.pixel(5, 5) || image.pixel(150, 100) != image.pixel(5, 5));
}

void TestSession::renderPaintsWhatTheSessionShows()
{
    TAMBER_REQUIRE_SAMPLES();
    const QString shown = path(QStringLiteral("shown.png"));
    const QByteArray commands = "import \"" + TestSupport::sampleCbz().toUtf8() + "\"\n" + "open \""
        + TestSupport::sampleCbz().toUtf8() + "\"\n" + "goto 2\nzoom 1.5\npaint\nscreenshot \""
        + shown.toUtf8() + "\"\n";
    const Run session
        = tamber({ QStringLiteral("session"), QStringLiteral("--size"), QStringLiteral("240x320") },
            commands);
    QCOMPARE(session.status, 0);

    const QString rendered = path(QStringLiteral("rendered.png"));
    const Run render
        = tamber({ QStringLiteral("render"), TestSupport::sampleCbz(), QStringLiteral("--page"),
            QStringLiteral("2"), QStringLiteral("--zoom"), QStringLiteral("1.5"),
            QStringLiteral("--size"), QStringLiteral("240x320"), QStringLiteral("-o"), rendered });
    QCOMPARE(render.status, 0);
    const QImage expected = QImage(shown).convertToFormat(QImage::Format_RGB32);
    QCOMPARE(expected.size(), QSize(240, 320));
    QCOMPARE(QImage(rendered).convertToFormat(QImage::Format_RGB32), expected);
}

void TestSession::renderFailuresExitWithStatus1_data()
{
    QTest::addColumn<QString>("book");
    QTest::addColumn<QString>("page");

    QTest::newRow("a book that is not in the library")
        << QStringLiteral("nowhere.cbz") << QStringLiteral("1");
    QTest::newRow("a page past the end") << QStringLiteral("comic.cbz") << QStringLiteral("3");
    QTest::newRow("a page that cannot be decoded")
        << QStringLiteral("comic.cbz") << QStringLiteral("2");
}

void TestSession::renderFailuresExitWithStatus1()
{
    QFETCH(QString, book);
    QFETCH(QString, page);
    QVERIFY(TestSupport::writeZip(path(QStringLiteral("comic.cbz")),
        { { "p1.png", TestSupport::encode(TestSupport::makePage(60, 80), "PNG") },
            { "p2.png", TestSupport::pngHeaderOnly(QSize(60, 80)) } }));
    QCOMPARE(tamber({ QStringLiteral("import"), path(QStringLiteral("comic.cbz")) }).status, 0);

    const QString output = path(QStringLiteral("page.png"));
    const Run run = tamber({ QStringLiteral("render"), path(book), QStringLiteral("--page"), page,
        QStringLiteral("-o"), output });
    QCOMPARE(run.status, 1);
    QVERIFY(!run.err.isEmpty());
    QVERIFY(!QFile::exists(output));
}

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
