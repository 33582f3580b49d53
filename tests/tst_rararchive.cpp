// SPDX-License-Identifier: MIT
#include "ComicZipArchive.h"
#include "RarArchive.h"
#include "TestSupport.h"

#include <QDir>
#include <QProcess>
#include <QTextCodec>
#include <QtTest>

using TestSupport::ZipEntry;
Q_DECLARE_METATYPE(QList<ZipEntry>)

// The RAR archive and the real extractor, which is built beside this suite.
class TestRarArchive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void samplesHoldTheSamePages();
    void readsTheContainersACbrMayBe_data();
    void readsTheContainersACbrMayBe();
    void extractorRefuses_data();
    void extractorRefuses();

private:
    TestSupport::TemporaryDir dir;
    QByteArray png;
};

namespace {

const QString unrar = TestSupport::binDir() + QStringLiteral("/unrar");

QStringList jpegs(const QStringList& names)
{
    return names.filter(QRegExp(QStringLiteral("\\.jpg$")));
}

} // namespace

void TestRarArchive::initTestCase()
{
    QVERIFY(dir.isValid());
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    // As the host sets it: Qt 4 encodes a program's arguments with it.
    QTextCodec::setCodecForCStrings(QTextCodec::codecForName("UTF-8"));
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    // The extractor runs in the C locale, where a Unicode name has no 8-bit
    // form: every name must still list, and read back by what was listed.
    qputenv("LC_ALL", "C");
    png = TestSupport::encode(TestSupport::makePage(30, 40), "PNG");
    // The extractor inherits the working directory, where relative paths start.
    QVERIFY(QDir::setCurrent(dir.path()));
}

void TestRarArchive::samplesHoldTheSamePages()
{
    TAMBER_REQUIRE_SAMPLES();
    ComicZipArchive zip(TestSupport::sampleCbz());
    RarArchive rar(TestSupport::sampleCbr());

    const QStringList pages = jpegs(rar.files());
    QCOMPARE(pages.size(), 5);
    QCOMPARE(pages, jpegs(zip.files()));
    for (const QString& page : pages) {
        QProcess extractor;
        extractor.start(unrar, { "p", "-ierr", "--", TestSupport::sampleCbr(), page });
        QVERIFY(extractor.waitForFinished());
        QCOMPARE(extractor.readAllStandardOutput(), zip.raw(page));
        QVERIFY(!rar.data(page).isNull());
        QCOMPARE(rar.data(page).size(), zip.data(page).size());
    }
}

void TestRarArchive::readsTheContainersACbrMayBe_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QList<ZipEntry>>("entries");
    QTest::addColumn<QStringList>("listed"); // the first is read

    const auto row = [](const char* name, const QString& path, const char* kind,
                         const QList<ZipEntry>& entries, const QStringList& listed) {
        QTest::newRow(name) << path << QString(kind) << entries << listed;
    };
    const QList<ZipEntry> inFolder { { "Book/01.png", png }, { "Book/notes.txt", "x" } };
    const QStringList inFolderListed { "Book/01.png", "Book/notes.txt", "" };
    row("RAR", "container.cbr", "rar", inFolder, inFolderListed);
    // Folders have entries of their own in ZIP; only files are listed.
    row("ZIP", "container.cbr", "zip", QList<ZipEntry> { { "Book/", "" } } + inFolder,
        inFolderListed);
    // Almost every 7z archive is LZMA2, 7-Zip's default.
    row("7z of LZMA2", "container.cbr", "7z", inFolder, inFolderListed);
    row("ZIP with UTF-8 names", "container.cbr", "zip", { { "Caf\xc3\xa9/01.png", png } },
        { QStringLiteral("Caf\u00e9/01.png"), "" });
    // A name in a code page is no UTF-8: listed with its bytes as Latin-1.
    row("ZIP with a code-page name", "container.cbr", "zip", { { "caf\x82 1.png", png } },
        { QString::fromLatin1("caf\x82 1.png"), "" });
    // Names and paths people have; relative ones start in the suite's folder.
    row("RAR with UTF-8 accents", "a.cbr", "rar",
        { { "Caf\xc3\xa9/01.png", png }, { "other.png", "no image" } },
        { QStringLiteral("Caf\u00e9/01.png"), "other.png", "" });
    row("name beginning with a dash", "a.cbr", "rar", { { "-01.png", png } }, { "-01.png", "" });
    row("path with blanks, quotes and #", "My \"Best\" #1 'x'.cbr", "rar", { { "1.png", png } },
        { "1.png", "" });
    row("non-ASCII path", QStringLiteral("Caf\u00e9 \u30da.cbr"), "rar", { { "1.png", png } },
        { "1.png", "" });
    row("relative path beginning with a dash", "-a.cbr", "rar", { { "1.png", png } },
        { "1.png", "" });
}

// Files named .cbr are often ZIP or 7z archives; the extractor reads them as well.
void TestRarArchive::readsTheContainersACbrMayBe()
{
    QFETCH(QString, path);
    QFETCH(QString, kind);
    QFETCH(QList<ZipEntry>, entries);
    QFETCH(QStringList, listed);
    QFile::remove(path);
    if (kind == QLatin1String("7z")) {
        TestSupport::TemporaryDir files;
        for (const ZipEntry& entry : entries)
            QVERIFY(TestSupport::writeFile(
                files.filePath(QString::fromUtf8(entry.first)), entry.second));
        QProcess archiver;
        archiver.setWorkingDirectory(files.path());
        archiver.start("7zz", { "a", "-bd", "-t7z", "-m0=lzma2", dir.filePath(path), "*" });
        if (!archiver.waitForStarted())
            QSKIP("7zz (Debian's 7zip) is not installed: scripts/setup installs it");
        QVERIFY(archiver.waitForFinished());
        QVERIFY2(archiver.exitCode() == 0, archiver.readAllStandardError().constData());
    } else {
        QVERIFY(kind == QLatin1String("zip") ? TestSupport::writeZip(path, entries)
                                             : TestSupport::writeRar(path, entries));
    }

    RarArchive archive(path);
    QCOMPARE(archive.files(), listed);
    const QString page = listed.first();
    QCOMPARE(archive.data(page).size(), QSize(30, 40));

    QProcess extractor;
    extractor.start(unrar, { "p", "-ierr", "--", path, page });
    QVERIFY(extractor.waitForFinished());
    QCOMPARE(extractor.exitCode(), 0);
    QCOMPARE(extractor.readAllStandardOutput(), png);
}

void TestRarArchive::extractorRefuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("usage");

    const QString book = dir.filePath("refuse.cbr");
    QVERIFY(TestSupport::writeRar(book, { { "a.png", "x" } }));
    const QString text = dir.filePath("text.cbr");
    QVERIFY(TestSupport::writeFile(text, "not an archive\n"));

    QTest::newRow("no arguments") << QStringList() << true;
    QTest::newRow("p without --") << QStringList { "p", "-ierr", book, "a.png" } << true;
    QTest::newRow("missing archive") << QStringList { "vb", book + "x" } << false;
    QTest::newRow("no archive at all") << QStringList { "vb", text } << false;
    QTest::newRow("a pattern is no name")
        << QStringList { "p", "-ierr", "--", book, "*.png" } << false;
    QTest::newRow("names are case-sensitive")
        << QStringList { "p", "-ierr", "--", book, "A.png" } << false;
}

void TestRarArchive::extractorRefuses()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, usage);

    QProcess extractor;
    extractor.start(unrar, arguments);
    QVERIFY(extractor.waitForFinished());
    QCOMPARE(extractor.exitStatus(), QProcess::NormalExit);
    QVERIFY(extractor.exitCode() != 0);
    QCOMPARE(extractor.readAllStandardOutput(), QByteArray());
    QCOMPARE(extractor.readAllStandardError().startsWith("usage: "), usage);
}

TAMBER_TEST_MAIN(TestRarArchive)
#include "tst_rararchive.moc"
