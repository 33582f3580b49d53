// SPDX-License-Identifier: MIT
// The comic archives: which archive a path gets, the ZIP archive's entries and
// failed reads, and single images within the pixel budget. The RAR archive has
// suites of its own.

#include "ComicArchiveFactory.h"
#include "ComicZipArchive.h"
#include "NullArchive.h"
#include "RarArchive.h"
#include "TestSupport.h"

#include <QImageReader>
#include <QtTest>

#include <zip.h>

#include <memory>

using TestSupport::MessageLog;

namespace {

QString kindOf(ComicArchive* archive)
{
    if (dynamic_cast<ComicZipArchive*>(archive))
        return QStringLiteral("ZIP");
    if (dynamic_cast<RarArchive*>(archive))
        return QStringLiteral("RAR");
    if (dynamic_cast<NullArchive*>(archive))
        return QStringLiteral("image");
    return QStringLiteral("none");
}

QString zipReadLine(qint64 count, const QString& name)
{
    return TestSupport::debugLine(
        QStringLiteral("WHAT'S THE DEAL?  I GET LENGTH OF  %1  for filename  \"%2\"")
            .arg(count)
            .arg(name));
}

} // namespace

class TestArchives : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void factoryChoosesBySuffix_data();
    void factoryChoosesBySuffix();
    void zipListsAndDecodesEveryEntry();
    void zipFailedReads_data();
    void zipFailedReads();
    void imageWithinThePixelBudget_data();
    void imageWithinThePixelBudget();

private:
    QString write(const QString& name, const QByteArray& bytes);
    QString write(const QString& name, const QSize& size, const char* format);

    TestSupport::TemporaryDir dir;
    QByteArray png;
};

QString TestArchives::write(const QString& name, const QByteArray& bytes)
{
    return TestSupport::writeFile(dir.filePath(name), bytes) ? dir.filePath(name) : QString();
}

QString TestArchives::write(const QString& name, const QSize& size, const char* format)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(qRgb(200, 200, 200));
    return image.save(dir.filePath(name), format) ? dir.filePath(name) : QString();
}

void TestArchives::initTestCase()
{
    QVERIFY(dir.isValid());
    png = TestSupport::encode(TestSupport::makePage(30, 40), "PNG");
}

void TestArchives::factoryChoosesBySuffix_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("kind");

    const auto row = [](const char* name, const char* path, const char* kind) {
        QTest::newRow(name) << QString(path) << QString(kind);
    };
    row("upper-case CBZ is a ZIP", "/books/Comic.CBZ", "ZIP");
    row("zave is a second ZIP suffix", "/books/comic.zave", "ZIP");
    row("cbr is a RAR", "/books/Comic.cbr", "RAR");
    row("only the last suffix counts", "/books/a.tar.cbr", "RAR");
    row("image keeps the path's case", "/Books/Page.PNG", "image");
    row("file:// reaches the archive unchanged", "file:///books/a.png", "image");
    row("dot only in a directory name", "/books/my.comics/book", "none");
    row("comic suffix only on the directory", "/books/old.cbz/book", "none");
    row("no suffix, but ends like a format", "/books/my.cbz/scanpng", "image");
    row("unknown suffix gives no archive", "/books/notes.txt", "none");
}

void TestArchives::factoryChoosesBySuffix()
{
    QFETCH(QString, path);
    QFETCH(QString, kind);

    const std::unique_ptr<ComicArchive> archive(ComicArchiveFactory::instance(path));
    QCOMPARE(kindOf(archive.get()), kind);
    if (kind == QLatin1String("image"))
        QCOMPARE(archive->files(), QStringList(path));
}

void TestArchives::zipListsAndDecodesEveryEntry()
{
    // Names in any encoding come back as their bytes, each as one Latin-1
    // character, so each opens again: libzip converts none, not even a name
    // it takes to be in a code page.
    const QList<QByteArray> names { "Chapter 1/", "Chapter 1/001.png", "notes.txt",
        "Caf\xc3\xa9/01.png", "\xe3\x83\x9a\xe3\x83\xbc\xe3\x82\xb8/02.png", "caf\xe9/03.png",
        "caf\x82 1.png" };
    QList<TestSupport::ZipEntry> entries;
    for (const QByteArray& name : names)
        entries << TestSupport::ZipEntry(name, name.endsWith(".png") ? png : QByteArray());
    const QString path = dir.filePath("book.cbz");
    QVERIFY(TestSupport::writeZip(path, entries));

    ComicZipArchive archive(path);
    const QStringList listed = archive.files();
    QCOMPARE(listed.join(QStringLiteral("|")).toLatin1(), TestSupport::joined(names, '|'));
    for (const QString& name : listed) {
        if (name.endsWith(QLatin1String(".png")))
            QCOMPARE(archive.data(name).size(), QSize(30, 40));
    }
}

void TestArchives::zipFailedReads_data()
{
    QTest::addColumn<QByteArray>("zip");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("lines");

    const QString path = dir.filePath("fixture.cbz");
    QVERIFY(TestSupport::writeZip(path, { { "page.png", png }, { "empty.png", "" } }));
    const QByteArray good = TestSupport::readFile(path);
    const QString noZip
        = TestSupport::debugLine(QStringLiteral("ZIP OPEN ERROR:  %1").arg(ZIP_ER_NOZIP));

    QTest::newRow("not a ZIP") << QByteArray("Rar!\x1a\x07\x01\x00", 8) << "page.png"
                               << QStringList { noZip, zipReadLine(-1, "page.png") };
    QTest::newRow("empty file: an archive without entries")
        << QByteArray() << "page.png" << QStringList(zipReadLine(-1, "page.png"));
    QTest::newRow("lookup is case-sensitive")
        << good << "PAGE.png" << QStringList(zipReadLine(-1, "PAGE.png"));
    QTest::newRow("empty entry") << good << "empty.png" << QStringList(zipReadLine(0, "empty.png"));

    // Entries claiming 4 GiB and encrypted ones are tst_hostile's, end to end.
}

void TestArchives::zipFailedReads()
{
    QFETCH(QByteArray, zip);
    QFETCH(QString, name);
    QFETCH(QStringList, lines);

    const QString path = dir.filePath("case.cbz");
    QVERIFY(TestSupport::writeFile(path, zip));

    MessageLog log;
    ComicZipArchive archive(path);
    QVERIFY(archive.data(name).isNull());
    QCOMPARE(log.lines(), lines);
}

void TestArchives::imageWithinThePixelBudget_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("decoded"); // invalid: not decoded
    QTest::addColumn<QString>("line"); // the one line logged starts so; empty: none, or the shrink

    // Empty drawings claim any size in their header and cost nothing to decode.
    const auto drawing = [this](int width, int height) {
        return write(QStringLiteral("%1x%2.svg").arg(width).arg(height),
            QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\"/>")
                .arg(width)
                .arg(height)
                .toLatin1());
    };
    QTest::newRow("4096 x 4096 PNG at full size")
        << write("full.png", QSize(4096, 4096), "PNG") << QSize(4096, 4096) << QString();
    QTest::newRow("4097 x 4096 JPEG shrunk by its decoder")
        << write("over.jpg", QSize(4097, 4096), "JPEG") << QSize(3072, 3072) << QString();
    // Qt 5's GIF reader paints the frame onto its whole canvas; Qt 4's gives
    // the frame alone.
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    const QSize gifDecoded(4097, 4096);
#else
    const QSize gifDecoded(1, 1);
#endif
    QTest::newRow("GIF measured by its first frame, not its larger canvas") << write("canvas.gif",
        TestSupport::gifWithScreen(QSize(4097, 4096))) << gifDecoded << QString();
    QTest::newRow("sides truncate separately")
        << drawing(10000, 8000) << QSize(4218, 3375) << QString();
    QTest::newRow("very wide takes several steps")
        << drawing(100000, 1000) << QSize(31640, 315) << QString();
    // A PGM decodes in full, but its decoder cannot shrink it, so it is not read.
    QTest::newRow("over budget and cannot shrink") << write("over.pgm", QSize(4097, 4096),
        "PGM") << QSize() << "Image too big and scaling not supported, bailing!";
    // 50000 x 50000 wraps to a negative 32-bit count: no bound applies.
    QTest::newRow("wrapped pixel count is within budget")
        << write("huge.png", TestSupport::pngHeaderOnly(QSize(50000, 50000))) << QSize()
        << "Image load error: ";
    QTest::newRow("missing file") << dir.filePath("missing.png") << QSize() << "Image load error: ";
}

void TestArchives::imageWithinThePixelBudget()
{
    QFETCH(QString, path);
    QFETCH(QSize, decoded);
    QFETCH(QString, line);

    if (path.endsWith(QLatin1String(".svg"))
        && !QImageReader::supportedImageFormats().contains("svg"))
        QSKIP("no SVG image plug-in: drawings of any claimed size cannot be made");
    const QSize claimed = QImageReader(path).size();
    if (decoded.isValid()
        && (claimed.width() > decoded.width() || claimed.height() > decoded.height()))
        line = TestSupport::debugLine(QStringLiteral("Image too big, scaling to QSize(%1, %2)")
                                          .arg(decoded.width())
                                          .arg(decoded.height()));
    MessageLog log;
    const QImage image = NullArchive(path).data(path);
    QCOMPARE(image.isNull() ? QSize() : image.size(), decoded);
    QCOMPARE(log.lines().size(), line.isEmpty() ? 0 : 1);
    if (!line.isEmpty())
        QVERIFY2(log.lines().first().startsWith(line), qPrintable(log.lines().first()));
}

TAMBER_TEST_MAIN(TestArchives)
#include "tst_archives.moc"
