// SPDX-License-Identifier: MIT
// AVIF and JPEG XL pages through the image plug-ins in bin/imageformats, as
// the comic plug-in meets them: pixels against the formats' own decoders and
// the sources, alpha, animations, orientation, a comic through the parser,
// the pixel budget and broken files. The files are made by the formats' own
// tools: avifenc and avifdec, cjxl and djxl.

#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "NullArchive.h"
#include "TestSupport.h"

#include <QBuffer>
#include <QImageReader>
#include <QProcess>
#include <QtTest>

namespace {

// A JPEG XL codestream that starts as a square image of the given side: its
// signature, then, least significant bit first, a size header of two sides
// (minus one) of 18 or 30 bits and the all-default image metadata.
QByteArray codestreamClaiming(quint32 side)
{
    QByteArray bytes("\xff\x0a");
    int count = 0;
    const auto put = [&](quint32 value, int width) {
        for (int i = 0; i < width; ++i, ++count) {
            if (count % 8 == 0)
                bytes += '\0';
            bytes[bytes.size() - 1]
                = char(bytes.at(bytes.size() - 1) | ((value >> i & 1) << count % 8));
        }
    };
    const bool large = side > (1u << 18);
    put(0, 1); // not small
    put(large ? 3 : 2, 2), put(side - 1, large ? 30 : 18); // height
    put(0, 3); // no ratio: the width follows
    put(large ? 3 : 2, 2), put(side - 1, large ? 30 : 18); // width
    put(1, 1); // default metadata
    return bytes + QByteArray(64, '\0');
}

// An Exif block whose orientation says: turn a quarter clockwise to show.
QByteArray turnedByExif(const QByteArray& jpeg)
{
    const QByteArray exif(
        "Exif\0\0MM\0\x2a\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0", 32);
    return jpeg.left(2) + "\xff\xe1" + char(0) + char(exif.size() + 2) + exif + jpeg.mid(2);
}

} // namespace

class TestPageFormats : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void decodes_data();
    void decodes();
    void comicImportsInPageOrder();
    void largePageIsRefusedUnread();
    void badInput_data();
    void badInput();

private:
    // A new file in the scratch folder: the bytes, or the image as PNG (as
    // GIF through netpbm, since Qt writes none).
    QString file(const QByteArray& bytes);
    QString file(const QImage& image, const QString& suffix = "png");
    // What the tool writes to the file named after its arguments; the
    // decoders choose their output's format by its suffix.
    QByteArray made(
        const QString& tool, const QStringList& arguments, const QString& suffix = "out");
    // What the format's own decoder, avifdec or djxl, makes of the bytes.
    QImage reference(const QString& tool, const QByteArray& bytes, QStringList options = {});

    TestSupport::TemporaryDir dir;
    int files = 0;
};

QString TestPageFormats::file(const QByteArray& bytes)
{
    const QString path = dir.filePath(QString::number(++files));
    return TestSupport::writeFile(path, bytes) ? path : QString();
}

QString TestPageFormats::file(const QImage& image, const QString& suffix)
{
    const QString path = dir.filePath(QString("%1.png").arg(++files));
    image.save(path);
    if (suffix == "png")
        return path;
    QProcess::execute("sh", { "-c", "pngtopnm \"$0\" | ppmtogif > \"$0.gif\" 2>/dev/null", path });
    return path + ".gif";
}

QByteArray TestPageFormats::made(
    const QString& tool, const QStringList& arguments, const QString& suffix)
{
    const QString output = dir.filePath(QString("%1.%2").arg(++files).arg(suffix));
    QProcess::execute(
        "sh", QStringList { "-c", "\"$0\" \"$@\" >/dev/null 2>&1", tool } + arguments << output);
    return TestSupport::readFile(output);
}

QImage TestPageFormats::reference(const QString& tool, const QByteArray& bytes, QStringList options)
{
    return QImage::fromData(made(tool, options << file(bytes), "png"), "PNG");
}

void TestPageFormats::initTestCase()
{
    const QStringList tools { "avifenc", "avifdec", "cjxl", "djxl", "gifsicle", "ppmtogif" };
    for (const QString& tool : tools) {
        if (QProcess::execute("sh", { "-c", "command -v " + tool + " >/dev/null" }) != 0)
            QSKIP(qPrintable(tool + " is not installed: scripts/setup installs it"));
    }
    for (const char* format : { "avif", "jxl" }) {
        QVERIFY2(QImageReader::supportedImageFormats().contains(format),
            qPrintable(QString("no %1 image plug-in in bin/imageformats").arg(format)));
        QVERIFY(ComicsReaderParser::isSupportedImage(QString("Chapter 1/P01.") + format));
    }
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    QVERIFY(QImageReader::supportedMimeTypes().contains("image/avif"));
    QVERIFY(QImageReader::supportedMimeTypes().contains("image/jxl"));
#endif
}

void TestPageFormats::decodes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QImage>("expected");
    QTest::addColumn<bool>("alpha");
    QTest::addColumn<double>("tolerance"); // mean difference per channel, of 255

    const QImage page = TestSupport::drawing(151, 199);
    const QImage clear = TestSupport::translucent(111, 77);
    const QImage first = TestSupport::makePage(64, 48, Qt::red);
    // The tools' files of the images, with the options given.
    const auto avifenc = [this](const QList<QImage>& images, QStringList options) {
        for (const QImage& image : images)
            options << file(image);
        return made("avifenc",
            options << "-s"
                    << "10");
    };
    const auto cjxl = [this](const QString& input, QStringList options) {
        return made("cjxl", options << "--quiet" << input);
    };
    const QStringList lossless { "-l" };

    const QByteArray avif = avifenc({ page }, { "-y", "420" });
    QTest::newRow("AVIF lossy 4:2:0 as avifdec decodes it")
        << avif << reference("avifdec", avif) << false << 1.0;
    const QByteArray deep = avifenc({ page }, { "-d", "10" });
    QTest::newRow("AVIF of 10 bits to 8 as avifdec decodes it")
        << deep << reference("avifdec", deep, { "-d", "8" }) << false << 1.0;
    QTest::newRow("AVIF lossless is exact") << avifenc({ page }, lossless) << page << false << 0.0;
    QTest::newRow("AVIF lossless alpha is exact and not premultiplied")
        << avifenc({ clear }, lossless) << clear << true << 0.0;
    QTest::newRow("AVIF sequence shows its first frame")
        << avifenc({ first, page.copy(0, 0, 64, 48) }, lossless) << first << true << 0.0;
    // Turned a quarter anticlockwise, then its left and right exchanged.
    QTest::newRow("AVIF turned and mirrored by its container")
        << avifenc({ page }, { "-l", "--irot", "1", "--imir", "1" })
        << page.transformed(QTransform().rotate(-90)).mirrored(true, false) << false << 0.0;

    const QByteArray jxl = cjxl(file(page), { "-d", "1" });
    QTest::newRow("JPEG XL lossy as djxl decodes it")
        << jxl << reference("djxl", jxl) << false << 1.0;
    QTest::newRow("JPEG XL lossless is exact")
        << cjxl(file(page), { "-d", "0" }) << page << false << 0.0;
    QTest::newRow("JPEG XL lossless alpha is exact and not premultiplied")
        << cjxl(file(clear), { "-d", "0" }) << clear << true << 0.0;
    // The JPEG's own coefficients, decoded by another IDCT than Qt's JPEG reader's.
    const QByteArray jpeg = TestSupport::encode(page, "JPEG");
    const QImage jpegPage = QImage::fromData(jpeg, "JPEG");
    QTest::newRow("JPEG recompressed without loss, against the JPEG")
        << cjxl(file(jpeg), {}) << jpegPage << false << 2.0;
    QTest::newRow("JPEG XL oriented as its Exif said, turned a quarter clockwise")
        << cjxl(file(turnedByExif(jpeg)), {}) << jpegPage.transformed(QTransform().rotate(90))
        << false << 2.0;
    const QByteArray gif = made("gifsicle",
        { "-d", "10", file(first, "gif"), file(TestSupport::makePage(64, 48), "gif"), "-o" });
    QTest::newRow("JPEG XL animation shows its first frame")
        << cjxl(file(gif), { "-d", "0" }) << QImage::fromData(gif, "GIF") << true << 0.0;
}

void TestPageFormats::decodes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QImage, expected);
    QFETCH(bool, alpha);
    QFETCH(double, tolerance);

    QVERIFY(!bytes.isEmpty() && !expected.isNull());
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    // Known from the header, before decoding; no scaled decoding on offer.
    QCOMPARE(reader.size(), expected.size());
    const int format = alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    QCOMPARE(int(reader.imageFormat()), format);
    QVERIFY(!reader.supportsOption(QImageIOHandler::ScaledSize));

    const QImage image = reader.read();
    QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
    QCOMPARE(int(image.format()), format);
    const double difference = TestSupport::meanDifference(image, expected);
    QVERIFY2(difference >= 0 && difference <= tolerance, qPrintable(QString::number(difference)));
}

void TestPageFormats::comicImportsInPageOrder()
{
    // Pages of both formats, stored out of order, beside a PNG page.
    const QImage page = TestSupport::drawing(60, 80);
    const QString comic = dir.filePath("pages.cbz");
    QVERIFY(TestSupport::writeZip(comic,
        { { "p10.avif", made("avifenc", { "-s", "10", file(page) }) },
            { "p02.jxl", made("cjxl", { "--quiet", file(page) }) },
            { "p01.avif", made("avifenc", { "-l", "-s", "10", file(page) }) },
            { "p03.png", TestSupport::encode(page, "PNG") }, { "notes.txt", "x" } }));

    ComicsReaderParser parser;
    TestSupport::Announcements announced(&parser);
    parser.parse(comic);
    QCOMPARE(announced.order, QStringLiteral("ppppv"));
    ComicZipArchive archive(comic);
    const char* const expected[] = { "p01.avif", "p02.jxl", "p03.png", "p10.avif" };
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(announced.pages.at(i).getId(), comic + '/' + expected[i]);
        QVERIFY(TestSupport::meanDifference(archive.data(expected[i]), page) <= 3.0);
    }
}

void TestPageFormats::largePageIsRefusedUnread()
{
    // Over the single-image archive's 4096 × 4096 budget, and neither decoder
    // can decode smaller: the page is refused before decoding.
    QImage big(5000, 5000, QImage::Format_RGB32);
    big.fill(QColor(200, 180, 160).rgb());
    const QString png = file(big);
    for (const QByteArray& bytes :
        { made("avifenc", { "-s", "10", png }), made("cjxl", { "--quiet", "-e", "1", png }) }) {
        const QString path = file(bytes);
        QVERIFY(QImageReader(path).size() == big.size());
        TestSupport::MessageLog log;
        QVERIFY(NullArchive(path).data(path).isNull());
        QCOMPARE(log.lines(),
            QStringList(
                TestSupport::debugLine("Image too big and scaling not supported, bailing!")));
    }
}

void TestPageFormats::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("claimed"); // invalid: no size known
    QTest::addColumn<bool>("fails"); // false: garbage pixels are allowed, of the claimed size

    const QImage page = TestSupport::drawing(64, 48);
    const QByteArray avif = made("avifenc", { "-s", "10", file(page) });
    const QByteArray jxl = made("cjxl", { "--quiet", file(page) });
    const QByteArray garbage(48, '\xa5');
    // The container's image size property: its type, a version, then two 32-bit sides.
    const int ispe = avif.indexOf("ispe") + 8;
    const QSize size(64, 48), unknown;

    // libavif parses the container whole, so that its end must be there.
    QTest::newRow("AVIF truncated") << avif.left(avif.size() * 2 / 3) << unknown << true;
    QTest::newRow("AVIF with its coded data garbled")
        << QByteArray(avif).replace(avif.size() - 60, garbage.size(), garbage) << size << false;
    QTest::newRow("AVIF of zero width")
        << QByteArray(avif).replace(ispe, 4, QByteArray(4, '\0')) << unknown << true;
    // Past libavif's limit on a side: refused while parsing.
    QTest::newRow("AVIF claiming 65,500 x 65,500")
        << QByteArray(avif).replace(ispe, 8, QByteArray("\0\0\xff\xdc\0\0\xff\xdc", 8)) << unknown
        << true;
    // Smaller than its AV1 frame: dav1d refuses the frame.
    QTest::newRow("AVIF claiming a smaller size than its frame") << QByteArray(avif).replace(ispe,
        8, QByteArray("\0\0\0\x08\0\0\0\x08", 8)) << QSize(8, 8) << true;
    QTest::newRow("JPEG XL truncated") << jxl.left(jxl.size() * 2 / 3) << size << true;
    QTest::newRow("JPEG XL with its coded data garbled")
        << QByteArray(jxl).replace(jxl.size() / 2, garbage.size(), garbage) << size << false;
    QTest::newRow("JPEG XL signature alone") << jxl.left(2) << unknown << true;
    // 16 GiB of pixels: refused before any allocation.
    QTest::newRow("JPEG XL codestream claiming 65,500 x 65,500")
        << codestreamClaiming(65500) << QSize(65500, 65500) << true;
    // 2^60 pixels: its memory must not be reckoned in 64 bits at all.
    QTest::newRow("JPEG XL codestream claiming 2^30 x 2^30")
        << codestreamClaiming(1u << 30) << QSize(1 << 30, 1 << 30) << true;
}

void TestPageFormats::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, claimed);
    QFETCH(bool, fails);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    QVERIFY(reader.canRead());
    QCOMPARE(reader.size(), claimed);
    const QImage image = reader.read();
    if (fails)
        QVERIFY(image.isNull());
    else if (!image.isNull())
        QCOMPARE(image.size(), claimed);
}

QTEST_MAIN(TestPageFormats)
#include "tst_pageformats.moc"
