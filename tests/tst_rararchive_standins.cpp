// SPDX-License-Identifier: MIT
#include "RarArchive.h"
#include "TestSupport.h"

#include <QCoreApplication>
#include <QtTest>

// The RAR archive with small shell scripts in place of the extractor. This suite
// is built into a folder of its own, where each case writes its "unrar".
class TestRarArchiveStandIns : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void missingExtractor();
    void listing_data();
    void listing();
    void entry_data();
    void entry();
    void namesAfterDoubleDash();
    void abandonsHangingExtractor();

private:
    void installExtractor(const QByteArray& body);
};

namespace {

QString inAppDir(const QString& name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}

const QString book = QStringLiteral("/books/comic.cbr");

} // namespace

void TestRarArchiveStandIns::installExtractor(const QByteArray& body)
{
    // A new file, as one still running cannot be written.
    const QString script = inAppDir("unrar");
    QFile::remove(script);
    QVERIFY(TestSupport::writeFile(script, "#!/bin/sh\nhere=$(dirname \"$0\")\n" + body + '\n'));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void TestRarArchiveStandIns::initTestCase()
{
    QVERIFY2(QCoreApplication::applicationDirPath() != TestSupport::binDir(),
        "this suite must not replace the real extractor");
    QVERIFY(TestSupport::writeFile(
        inAppDir("page.png"), TestSupport::encode(TestSupport::makePage(30, 40), "PNG")));
}

void TestRarArchiveStandIns::missingExtractor()
{
    QFile::remove(inAppDir("unrar"));
    TestSupport::MessageLog log;
    QVERIFY(RarArchive(book).files().isEmpty());
    QVERIFY(RarArchive(book).data("1.png").isNull());
    QVERIFY(log.lines().isEmpty());
}

void TestRarArchiveStandIns::listing_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("a line break after the last name gives an empty name") << QByteArray(
        "printf 'a.png\\nb.png\\nc.png\\n'") << QStringList { "a.png", "b.png", "c.png", "" };
    QTest::newRow("carriage returns stay in the names")
        << QByteArray("printf 'a.png\\r\\nb.png'") << QStringList { "a.png\r", "b.png" };
    QTest::newRow("output ends at the first NUL")
        << QByteArray("printf 'a.png\\nb.png\\0c.png\\n'") << QStringList { "a.png", "b.png" };
    QTest::newRow("exit status is ignored")
        << QByteArray("printf a.png; exit 3") << QStringList("a.png");
    QTest::newRow("crash after printing names")
        << QByteArray("echo a.png; kill -SEGV $$") << QStringList();
}

void TestRarArchiveStandIns::listing()
{
    QFETCH(QByteArray, script);
    QFETCH(QStringList, names);
    installExtractor(script);
    QCOMPARE(RarArchive(book).files(), names);
}

void TestRarArchiveStandIns::entry_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<bool>("decodes");

    QTest::newRow("exit status is ignored") << QByteArray("cat \"$here/page.png\"; exit 1") << true;
    QTest::newRow("exits part way through") << QByteArray("head -c 99 \"$here/page.png\"") << false;
}

void TestRarArchiveStandIns::entry()
{
    QFETCH(QByteArray, script);
    QFETCH(bool, decodes);
    installExtractor(script);
    QCOMPARE(RarArchive(book).data("1.png").isNull(), !decodes);
}

void TestRarArchiveStandIns::namesAfterDoubleDash()
{
    installExtractor("for a in \"$@\"; do printf '%s\\n' \"$a\"; done >> \"$here/arguments\"");
    QFile::remove(inAppDir("arguments"));

    RarArchive archive(QStringLiteral("-comic.cbr"));
    archive.files();
    archive.data("-01.png");
    QCOMPARE(TestSupport::readFile(inAppDir("arguments")),
        QByteArray("vb\n-comic.cbr\np\n-ierr\n--\n-comic.cbr\n-01.png\n"));
}

void TestRarArchiveStandIns::abandonsHangingExtractor()
{
    if (!!qgetenv("TAMBER_SLOW_TESTS").isEmpty())
        QSKIP("waits out the archive's 30 s limit; set TAMBER_SLOW_TESTS to run it");
    installExtractor("echo $$ > \"$here/pid\"; echo a.png; exec sleep 600");

    QVERIFY(RarArchive(book).files().isEmpty());

    const QByteArray pid = TestSupport::readFile(inAppDir("pid")).trimmed();
    QVERIFY(!pid.isEmpty());
    QVERIFY2(!QFileInfo(QStringLiteral("/proc/") + pid).exists(), "the extractor was left running");
}

QTEST_MAIN(TestRarArchiveStandIns)
#include "tst_rararchive_standins.moc"
