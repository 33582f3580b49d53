// SPDX-License-Identifier: MIT
// The library survives its host: tamber session is killed at random moments
// while it turns pages and saves positions and dog ears, and every save it
// reported before the kill must still be there; a library that cannot be
// written gives a clear error and stays as it was. Rounds are seeded, so a
// failing round can be run again (TAMBER_DURABILITY_SEED).

#include "TestSupport.h"

#include <QProcess>
#include <QtTest>

#include <nlohmann/json.hpp>

#include <random>

using TestSupport::jsonAt;
using TestSupport::jsonText;

namespace {

const int pageCount = 12;
const int rounds = 20;

// What the library holds for the book, read as a host reopening it would.
struct Stored
{
    QString integrity;
    QString position;
    QStringList dogEars;
};

Stored readLibrary(const QString& path, const QString& bookId)
{
    QProcess sqlite;
    sqlite.start(QStringLiteral("sqlite3"),
        { path,
            QStringLiteral(
                "PRAGMA integrity_check; "
                "SELECT coalesce((SELECT bookmarked_page_id FROM volumes WHERE id = '%1'), ''); "
                "SELECT group_concat(extra_data, ' ') FROM "
                "(SELECT extra_data FROM dog_ears WHERE book_id = '%1' ORDER BY id);")
                .arg(bookId) });
    sqlite.waitForFinished();
    const QStringList lines = QString::fromUtf8(sqlite.readAllStandardOutput()).split('\n');
    return { lines.value(0), lines.value(1), lines.value(2).split(' ', QtCompat::SkipEmptyParts) };
}

} // namespace

class TestDurability : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void savesReportedBeforeAKillSurvive();
    void fullDiskLeavesTheLibraryAsItWas_data();
    void fullDiskLeavesTheLibraryAsItWas();

private:
    QString path(const QString& name) const { return m_dir->filePath(name); }
    void startTamber(
        QProcess& process, const QStringList& arguments, const QString& limit = "unlimited");

    std::unique_ptr<TestSupport::TemporaryDir> m_dir;
    QString m_library;
    QString m_book;
};

// On m_library. No file that tamber writes can grow past limit KiB: with a
// number, a full disk without mounting one, where writes fail with EFBIG.
// bash sets the limit and ignores the signal, and tamber inherits both.
void TestDurability::startTamber(
    QProcess& process, const QStringList& arguments, const QString& limit)
{
    process.setProcessEnvironment(TestSupport::Tamber(m_dir->path()).environment);
    process.start(QStringLiteral("bash"),
        QStringList { "-c", "trap '' XFSZ; ulimit -f $0; exec \"$@\"", limit,
            TestSupport::binDir() + QStringLiteral("/tamber") }
            + arguments);
}

void TestDurability::init()
{
    m_dir = std::make_unique<TestSupport::TemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_library = path(QStringLiteral("library.sqlite"));
    m_book = path(QStringLiteral("book.cbz"));
    QVERIFY(TestSupport::writeComic(m_book, pageCount));
    QCOMPARE(
        TestSupport::Tamber(m_dir->path()).run({ QStringLiteral("import"), m_book }).status, 0);
}

void TestDurability::savesReportedBeforeAKillSurvive()
{
    const QByteArray seedText = qgetenv("TAMBER_DURABILITY_SEED");
    const quint32 seed = seedText.isEmpty() ? 20261121u : seedText.toUInt();
    std::mt19937 generator(seed);
    // A number from 0 to below bound.
    const auto random = [&generator](int bound) {
        return std::uniform_int_distribution<int>(0, bound - 1)(generator);
    };
    const QString pageId = m_book + QStringLiteral("/p%1.png");
    Stored before = readLibrary(m_library, m_book);
    int kills = 0;

    for (int round = 0; round < rounds; ++round) {
        // The script, and what each save and each dog ear would store.
        QByteArray script = "open \"" + m_book.toUtf8() + "\"\n";
        QStringList positions;
        QStringList dogEars;
        int page = 0;
        for (int command = 0; command < 60; ++command) {
            switch (random(3)) {
            case 0:
                page = random(pageCount);
                script += "goto " + QByteArray::number(page + 1) + '\n';
                break;
            case 1:
                script += "save\nstate\n";
                positions << pageId.arg(page + 1, 2, 10, QLatin1Char('0'));
                break;
            default:
                script += "dogear add\ndogear list\n";
                dogEars << QString::number(page);
            }
        }

        QProcess session;
        startTamber(session, { QStringLiteral("session") });
        session.write(script);
        session.closeWriteChannel();
        const int killAt = 1 + random(120);
        int lines = 0;
        QString reportedPosition = before.position;
        QStringList reportedDogEars = before.dogEars;
        int savesReported = 0;
        int dogEarsReported = 0;
        while (lines < killAt && (session.canReadLine() || session.waitForReadyRead(30000))) {
            while (lines < killAt && session.canReadLine()) {
                ++lines;
                const nlohmann::json line = TestSupport::parseJson(session.readLine());
                const QString result = jsonText(jsonAt(line, "/result"));
                if (result == QLatin1String("state")) {
                    reportedPosition = jsonText(jsonAt(line, "/stored/bookmarkedPageId"));
                    QCOMPARE(reportedPosition, positions.at(savesReported++));
                } else if (result == QLatin1String("dogear list")) {
                    reportedDogEars.clear();
                    const nlohmann::json dogEars = jsonAt(line, "/bookmarks");
                    for (const nlohmann::json& dogEar : dogEars)
                        reportedDogEars << jsonText(jsonAt(dogEar, "/extraData"));
                    QCOMPARE(reportedDogEars.size(), before.dogEars.size() + ++dogEarsReported);
                }
            }
        }
        if (lines == killAt) {
            session.kill();
            ++kills;
        }
        session.waitForFinished(30000);

        const Stored after = readLibrary(m_library, m_book);
        const QString context = QStringLiteral("seed %1, round %2, killed after line %3")
                                    .arg(seed)
                                    .arg(round)
                                    .arg(lines);
        QVERIFY2(
            after.integrity == QLatin1String("ok"), qPrintable(context + ": " + after.integrity));
        // The last reported position, or that of a save the kill cut short
        // of its report.
        QStringList possible = positions.mid(savesReported);
        possible << reportedPosition;
        QVERIFY2(possible.contains(after.position), qPrintable(context + ": " + after.position));
        // Every reported dog ear, then perhaps some of the next ones, in order.
        QVERIFY2(
            after.dogEars.mid(0, reportedDogEars.size()) == reportedDogEars, qPrintable(context));
        QVERIFY2(dogEars.mid(dogEarsReported).mid(0, after.dogEars.size() - reportedDogEars.size())
                == after.dogEars.mid(reportedDogEars.size()),
            qPrintable(context));
        before = after;
    }
    qDebug("seed %u: %d of %d rounds ended in a kill", seed, kills, rounds);
    QVERIFY2(kills > rounds / 2, "most rounds should end in a kill");
}

void TestDurability::fullDiskLeavesTheLibraryAsItWas_data()
{
    QTest::addColumn<QString>("limit"); // KiB
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("messages");

    // Too little even for the journal's index beside the file: no opening.
    QTest::newRow("no room to open the library")
        << "4" << QStringList { "session" }
        << QByteArray("open \"$DIR/book.cbz\"\ngoto 5\nsave\ndogear add\n") << 2
        << QStringList { "cannot open the library: $DIR/library.sqlite: disk I/O error" };
    // Room for the index and a little journal: the import fails part way.
    QTest::newRow("no room for an import of 2,000 pages")
        << "64" << QStringList { "import", "$DIR/big.cbz" } << QByteArray() << 1
        << QStringList { "$DIR/big.cbz: ", "disk I/O error" };
}

void TestDurability::fullDiskLeavesTheLibraryAsItWas()
{
    QFETCH(QString, limit);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, script);
    QFETCH(int, status);
    QFETCH(QStringList, messages);

    QList<TestSupport::ZipEntry> pages;
    for (int i = 0; i < 2000; ++i)
        pages << TestSupport::ZipEntry(QByteArray::number(i + 1000) + ".png", QByteArray());
    QVERIFY(TestSupport::writeZip(path(QStringLiteral("big.cbz")), pages));
    arguments.replaceInStrings(QStringLiteral("$DIR"), m_dir->path());
    messages.replaceInStrings(QStringLiteral("$DIR"), m_dir->path());
    const QByteArray before = TestSupport::readFile(m_library);
    QVERIFY(!before.isEmpty());
    QVERIFY(!QFile::exists(m_library + QStringLiteral("-wal")));

    QProcess process;
    startTamber(process, arguments, limit);
    process.write(script.replace("$DIR", m_dir->path().toUtf8()));
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(60000));
    const QByteArray err = process.readAllStandardError();
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), status);
    for (const QString& message : messages)
        QVERIFY2(QString::fromUtf8(err).contains(message), err.constData());

    QCOMPARE(TestSupport::readFile(m_library), before);
    const Stored after = readLibrary(m_library, m_book);
    QCOMPARE(after.integrity, QStringLiteral("ok"));
    QCOMPARE(after.position, QString());
}

TAMBER_TEST_MAIN(TestDurability)
#include "tst_durability.moc"
