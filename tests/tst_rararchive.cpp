// SPDX-License-Identifier: MIT
#include "ComicArchiveFactory.h"
#include "ComicZipArchive.h"
#include "RarArchive.h"
#include "TestSupport.h"

#include <QDir>
#include <QProcess>
#include <QTextCodec>
#include <QtTest>

#include <memory>

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
    void namesRoundTripWhateverTheCodecs_data();
    void namesRoundTripWhateverTheCodecs();

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
    // As a host in a UTF-8 locale has it: QProcess encodes a program's
    // arguments with it.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
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
    // The content decides when the suffix lies: such books are common.
    row("7z named .cbz", "lies.cbz", "7z", inFolder, inFolderListed);
    row("RAR named .cbz", "lies.cbz", "rar", inFolder, inFolderListed);
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

    const std::unique_ptr<ComicArchive> archive(ComicArchiveFactory::instance(path));
    QVERIFY(dynamic_cast<RarArchive*>(archive.get()));
    QCOMPARE(archive->files(), listed);
    const QString page = listed.first();
    QCOMPARE(archive->data(page).size(), QSize(30, 40));

    QProcess extractor;
    extractor.start(unrar, { "p", "-ierr", "--", path, page });
    QVERIFY(extractor.waitForFinished());
    QCOMPARE(extractor.exitCode(), 0);
    QCOMPARE(extractor.readAllStandardOutput(), png);
}

void TestRarArchive::namesRoundTripWhateverTheCodecs_data()
{
    QTest::addColumn<QByteArray>("localeCodec");
    QTest::addColumn<QByteArray>("cStringCodec"); // Qt 4's; empty: none set

    QTest::newRow("UTF-8 locale") << QByteArray("UTF-8") << QByteArray();
    QTest::newRow("Latin-1 locale, as Qt 4 has it in the C locale")
        << QByteArray("ISO-8859-1") << QByteArray();
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    QTest::newRow("a host's UTF-8 for C strings, in a Latin-1 locale")
        << QByteArray("ISO-8859-1") << QByteArray("UTF-8");
    QTest::newRow("a host's Latin-1 for C strings, in a UTF-8 locale")
        << QByteArray("UTF-8") << QByteArray("ISO-8859-1");
#endif
}

// Whatever codecs the host sets, a listed name reaches the container again as
// the bytes it was listed with: through the extractor (RAR, and the ZIP and 7z
// books it reads) and through libzip.
void TestRarArchive::namesRoundTripWhateverTheCodecs()
{
    QFETCH(QByteArray, localeCodec);
    QFETCH(QByteArray, cStringCodec);

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    QTextCodec::setCodecForCStrings(
        cStringCodec.isEmpty() ? nullptr : QTextCodec::codecForName(cStringCodec));
#else
    Q_UNUSED(cStringCodec);
#endif
    QTextCodec::setCodecForLocale(QTextCodec::codecForName(localeCodec));

    const QList<ZipEntry> entries { { "caf\xc3\xa9/\xe3\x83\x9a\xe3\x83\xbc\xe3\x82\xb8"
                                      "4.png",
                                        png },
        { "code page \x82.png", png } };
    QVERIFY(TestSupport::writeRar(dir.filePath("names.cbr"), entries));
    QVERIFY(TestSupport::writeZip(dir.filePath("names-zip.cbr"), entries));
    QVERIFY(TestSupport::writeZip(dir.filePath("names.cbz"), entries));
    for (const char* book : { "names.cbr", "names-zip.cbr", "names.cbz" }) {
        const std::unique_ptr<ComicArchive> archive(
            ComicArchiveFactory::instance(dir.filePath(book)));
        QStringList names = archive->files();
        names.removeAll(QString());
        QCOMPARE(names.size(), 2);
        for (const QString& name : names)
            QVERIFY2(!archive->data(name).isNull(),
                qPrintable(QStringLiteral("%1 in %2").arg(name, book)));
    }

    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    QTextCodec::setCodecForCStrings(nullptr);
#endif
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
