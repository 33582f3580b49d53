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
    void listingAndEntry_data();
    void listingAndEntry();
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

void TestRarArchiveStandIns::listingAndEntry_data()
{
    QTest::addColumn<QByteArray>("script"); // null: no extractor at all
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<bool>("decodes");

    const auto row
        = [](const char* name, const QByteArray& script, const QStringList& names,
              bool decodes = false) { QTest::newRow(name) << script << names << decodes; };
    // Without an extractor nothing is listed or read, and nothing is logged.
    row("no extractor", QByteArray(), {});
    row("a line break after the last name gives an empty name", "printf 'a.png\\nb.png\\nc.png\\n'",
        { "a.png", "b.png", "c.png", "" });
    row("carriage returns stay in the names", "printf 'a.png\\r\\nb.png'", { "a.png\r", "b.png" });
    row("output ends at the first NUL", "printf 'a.png\\nb.png\\0c.png\\n'", { "a.png", "b.png" });
    row("crash after printing names", "echo a.png; kill -SEGV $$", {});
    row("a listing's exit status is ignored", "printf a.png; exit 3", { "a.png" });
    // Asked for a page, it prints it; it lists nothing, one empty name.
    // One dying part way through an entry is tst_hostile's.
    row("an entry's exit status is ignored", "[ \"$1\" = p ] && cat \"$here/page.png\"; exit 1",
        { "" }, true);
}

void TestRarArchiveStandIns::listingAndEntry()
{
    QFETCH(QByteArray, script);
    QFETCH(QStringList, names);
    QFETCH(bool, decodes);
    if (script.isNull())
        QFile::remove(inAppDir("unrar"));
    else
        installExtractor(script);
    TestSupport::MessageLog log;
    QCOMPARE(RarArchive(book).files(), names);
    QCOMPARE(RarArchive(book).data("1.png").isNull(), !decodes);
    QVERIFY(log.lines().isEmpty());
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
    installExtractor("echo $$ > \"$here/pid\"; echo a.png; exec sleep 600");

    QVERIFY(RarArchive(book).files().isEmpty());

    const QByteArray pid = TestSupport::readFile(inAppDir("pid")).trimmed();
    QVERIFY(!pid.isEmpty());
    QVERIFY2(!QFileInfo(QStringLiteral("/proc/") + pid).exists(), "the extractor was left running");
}

TAMBER_TEST_MAIN(TestRarArchiveStandIns)
#include "tst_rararchive_standins.moc"
