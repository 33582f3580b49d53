// SPDX-License-Identifier: MIT
// WebP, AVIF and JPEG XL pages through the image plug-ins in bin/imageformats,
// as the comic plug-in meets them: pixels against the sources and the formats'
// own decoders, alpha, animations, orientation, scaled decoding where the
// format has it, the file types, a comic through the parser, the pixel budget
// and broken files. The files are made by the formats' own tools: cwebp and
// img2webp, avifenc and avifdec, cjxl and djxl.

#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "ImageFormatSupport.h"
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

// Linux's count of the process's resident memory in MiB: field "VmRSS" now,
// "VmHWM" its peak since resetResidentPeak(); -1 where not counted.
int residentMb(const QByteArray& field)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field + ':'))
            return int(line.mid(field.size() + 1).trimmed().split(' ').first().toLongLong() >> 10);
    }
    return -1;
}

bool resetResidentPeak()
{
    QFile clear("/proc/self/clear_refs");
    return clear.open(QIODevice::WriteOnly) && clear.write("5") == 1 && clear.flush();
}

// bytes with the bytes from at on replaced by with.
QByteArray patched(QByteArray bytes, int at, const QByteArray& with)
{
    return bytes.replace(at, with.size(), with);
}

} // namespace

class TestPageFormats : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void decodes_data();
    void decodes();
    void detectedByContent_data();
    void detectedByContent();
    void comicImportsInPageOrder();
    void largePage_data();
    void largePage();
    void memoryBudget_data();
    void memoryBudget();
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
    // The formats' files of the images, with the options given: cwebp's of
    // one image, or img2webp's animation of lossless frames; avifenc's image
    // or sequence; cjxl's of a PNG, JPEG or GIF file.
    QByteArray webp(const QList<QImage>& frames, QStringList options = { "-lossless" });
    QByteArray avif(const QList<QImage>& images, QStringList options = {});
    QByteArray jxl(const QString& input, QStringList options = {});

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

QByteArray TestPageFormats::webp(const QList<QImage>& frames, QStringList options)
{
    for (const QImage& frame : frames)
        options << file(frame);
    return made(frames.size() > 1 ? "img2webp" : "cwebp", options << "-o");
}

QByteArray TestPageFormats::avif(const QList<QImage>& images, QStringList options)
{
    for (const QImage& image : images)
        options << file(image);
    return made("avifenc",
        options << "-s"
                << "10");
}

QByteArray TestPageFormats::jxl(const QString& input, QStringList options)
{
    return made("cjxl", options << "--quiet" << input);
}

void TestPageFormats::initTestCase()
{
    const QStringList tools { "cwebp", "img2webp", "avifenc", "avifdec", "cjxl", "djxl", "gifsicle",
        "ppmtogif" };
    for (const QString& tool : tools) {
        if (QProcess::execute("sh", { "-c", "command -v " + tool + " >/dev/null" }) != 0)
            QSKIP(qPrintable(tool + " is not installed: scripts/setup installs it"));
    }
    for (const char* format : { "webp", "avif", "jxl" }) {
        QVERIFY2(QImageReader::supportedImageFormats().contains(format),
            qPrintable(QString("no %1 image plug-in in bin/imageformats").arg(format)));
        QVERIFY(ComicsReaderParser::isSupportedImage(QString("Chapter 1/P01.") + format));
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
        QVERIFY(QImageReader::supportedMimeTypes().contains(QByteArray("image/") + format));
#endif
    }
}

void TestPageFormats::decodes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QImage>("expected");
    QTest::addColumn<QSize>("scaled"); // invalid: the full size
    QTest::addColumn<bool>("alpha");
    QTest::addColumn<double>("tolerance"); // mean difference per channel, of 255

    const QImage page = TestSupport::drawing(151, 199);
    const QImage clear = TestSupport::translucent(111, 77);
    const QImage first = TestSupport::makePage(64, 48, Qt::red);
    const QList<QImage> frames { first, TestSupport::makePage(64, 48, Qt::blue),
        page.copy(0, 0, 64, 48) };
    const QStringList lossy { "-q", "90" };
    const QSize full;
    // A smooth scale of the source is the yardstick of a scaled decode.
    const auto smallerBy = [](const QImage& image, int factor) {
        return image.scaled(image.size() / factor, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };

    QTest::newRow("WebP lossless is exact") << webp({ page }) << page << full << false << 0.0;
    QTest::newRow("WebP lossless alpha is exact and not premultiplied")
        << webp({ clear }) << clear << full << true << 0.0;
    // Quality 90 on flat colour, gradients and ink lines: about one level off.
    QTest::newRow("WebP lossy within 3 levels of 255")
        << webp({ page }, lossy) << page << full << false << 3.0;
    QTest::newRow("WebP lossy with alpha within 3 levels")
        << webp({ clear }, lossy) << clear << full << true << 3.0;
    // Scaled by libwebp while decoding, here and for the animation.
    QTest::newRow("WebP lossy at half size")
        << webp({ page }, lossy) << smallerBy(page, 2) << page.size() / 2 << false << 6.0;
    const QByteArray animation = webp(frames);
    QTest::newRow("WebP animation shows its first frame")
        << animation << first << full << true << 0.0;
    QTest::newRow("WebP animation's first frame scaled")
        << animation << smallerBy(first, 2) << QSize(32, 24) << true << 6.0;

    const QStringList lossless { "-l" };
    const QByteArray lossyAvif = avif({ page }, { "-y", "420" });
    QTest::newRow("AVIF lossy 4:2:0 as avifdec decodes it")
        << lossyAvif << reference("avifdec", lossyAvif) << full << false << 1.0;
    const QByteArray deep = avif({ page }, { "-d", "10" });
    QTest::newRow("AVIF of 10 bits to 8 as avifdec decodes it")
        << deep << reference("avifdec", deep, { "-d", "8" }) << full << false << 1.0;
    QTest::newRow("AVIF lossless is exact")
        << avif({ page }, lossless) << page << full << false << 0.0;
    QTest::newRow("AVIF lossless alpha is exact and not premultiplied")
        << avif({ clear }, lossless) << clear << full << true << 0.0;
    QTest::newRow("AVIF sequence shows its first frame")
        << avif(frames, lossless) << first << full << true << 0.0;
    // Turned a quarter anticlockwise, then its left and right exchanged.
    QTest::newRow("AVIF turned and mirrored by its container")
        << avif({ page }, { "-l", "--irot", "1", "--imir", "1" })
        << page.transformed(QTransform().rotate(-90)).mirrored(true, false) << full << false << 0.0;

    const QByteArray lossyJxl = jxl(file(page), { "-d", "1" });
    QTest::newRow("JPEG XL lossy as djxl decodes it")
        << lossyJxl << reference("djxl", lossyJxl) << full << false << 1.0;
    QTest::newRow("JPEG XL lossless is exact")
        << jxl(file(page), { "-d", "0" }) << page << full << false << 0.0;
    QTest::newRow("JPEG XL lossless alpha is exact and not premultiplied")
        << jxl(file(clear), { "-d", "0" }) << clear << full << true << 0.0;
    // The JPEG's own coefficients, decoded by another IDCT than Qt's JPEG reader's.
    const QByteArray jpeg = TestSupport::encode(page, "JPEG");
    const QImage jpegPage = QImage::fromData(jpeg, "JPEG");
    QTest::newRow("JPEG recompressed without loss, against the JPEG")
        << jxl(file(jpeg)) << jpegPage << full << false << 2.0;
    QTest::newRow("JPEG XL oriented as its Exif said, turned a quarter clockwise")
        << jxl(file(turnedByExif(jpeg))) << jpegPage.transformed(QTransform().rotate(90)) << full
        << false << 2.0;
    // A frame of no duration would be a layer of the next: a tenth of a second each.
    const QByteArray gif = made(
        "gifsicle", { "-d", "10", file(frames.at(0), "gif"), file(frames.at(1), "gif"), "-o" });
    QTest::newRow("JPEG XL animation shows its first frame")
        << jxl(file(gif), { "-d", "0" }) << QImage::fromData(gif, "GIF") << full << true << 0.0;
}

void TestPageFormats::decodes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QImage, expected);
    QFETCH(QSize, scaled);
    QFETCH(bool, alpha);
    QFETCH(double, tolerance);

    QVERIFY(!bytes.isEmpty() && !expected.isNull());
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    // Known from the header, before decoding. Only WebP decodes smaller.
    if (!scaled.isValid())
        QCOMPARE(reader.size(), expected.size());
    const int format = alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    QCOMPARE(int(reader.imageFormat()), format);
    QCOMPARE(reader.supportsOption(QImageIOHandler::ScaledSize), reader.format() == "webp");
    if (scaled.isValid())
        reader.setScaledSize(scaled);

    const QImage image = reader.read();
    QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
    QCOMPARE(int(image.format()), format);
    const double difference = TestSupport::meanDifference(image, expected);
    QVERIFY2(difference >= 0 && difference <= tolerance, qPrintable(QString::number(difference)));
}

void TestPageFormats::detectedByContent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("format"); // empty: not readable

    const QImage page = TestSupport::drawing(40, 30);
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    // Qt 4 hands a file named .png to its PNG reader without asking it first.
    QTest::newRow("WebP under a .png name")
        << "page.png" << webp({ page }, { "-q", "90" }) << QByteArray("webp");
#endif
    QTest::newRow("WebP without a suffix") << "page" << webp({ page }) << QByteArray("webp");
    QTest::newRow("AVIF under a .jxl name") << "page.jxl" << avif({ page }) << QByteArray("avif");
    QTest::newRow("JPEG XL without a suffix") << "jxl" << jxl(file(page)) << QByteArray("jxl");
    for (const char* suffix : { "webp", "avif", "jxl" }) {
        QTest::newRow(qPrintable(QString("PNG under a .%1 name").arg(suffix)))
            << QString("png.") + suffix << TestSupport::encode(page, "PNG") << QByteArray("png");
    }
    QTest::newRow("a RIFF of another kind")
        << "sound.webp" << QByteArray("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0", 20) + QByteArray(20, '\0')
        << QByteArray();
}

void TestPageFormats::detectedByContent()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, format);

    const QString path = dir.filePath(name);
    QVERIFY(TestSupport::writeFile(path, bytes));
    QImageReader reader(path);
    QCOMPARE(reader.format(), format);
    QCOMPARE(reader.read().isNull(), format.isEmpty());
}

void TestPageFormats::comicImportsInPageOrder()
{
    // Pages of each format, stored out of order, beside a PNG page.
    const QImage page = TestSupport::drawing(60, 80);
    const QString comic = dir.filePath("pages.cbz");
    QVERIFY(TestSupport::writeZip(comic,
        { { "p10.avif", avif({ page }) }, { "p02.jxl", jxl(file(page)) },
            { "p01.webp", webp({ page }) }, { "p04.webp", webp({ page }, { "-q", "90" }) },
            { "p03.png", TestSupport::encode(page, "PNG") }, { "notes.txt", "x" } }));

    ComicsReaderParser parser;
    TestSupport::Announcements announced(&parser);
    parser.parse(comic);
    QCOMPARE(announced.order, QStringLiteral("pppppv"));
    ComicZipArchive archive(comic);
    const char* const expected[] = { "p01.webp", "p02.jxl", "p03.png", "p04.webp", "p10.avif" };
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(announced.pages.at(i).getId(), comic + '/' + expected[i]);
        QVERIFY(TestSupport::meanDifference(archive.data(expected[i]), page) <= 3.0);
    }
}

void TestPageFormats::largePage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("decoded"); // empty: refused
    QTest::addColumn<QString>("line");

    // Over the single-image archive's 4096 × 4096 budget.
    QImage big(5000, 5000, QImage::Format_RGB32);
    big.fill(QColor(200, 180, 160).rgb());
    const QString png = file(big);
    QTest::newRow("WebP is decoded smaller by libwebp, never in full first") << webp({ big },
        { "-q", "50" }) << QSize(3750, 3750) << "Image too big, scaling to QSize(3750, 3750)";
    // Neither decoder can decode smaller: refused before decoding.
    const QString refused("Image too big and scaling not supported, bailing!");
    QTest::newRow("AVIF is refused unread")
        << made("avifenc", { "-s", "10", png }) << QSize(0, 0) << refused;
    QTest::newRow("JPEG XL is refused unread")
        << made("cjxl", { "--quiet", "-e", "1", png }) << QSize(0, 0) << refused;
}

void TestPageFormats::largePage()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, decoded);
    QFETCH(QString, line);

    const QString path = file(bytes);
    QCOMPARE(QImageReader(path).size(), QSize(5000, 5000));
    TestSupport::MessageLog log;
    const QImage image = NullArchive(path).data(path);
    QCOMPARE(image.size(), decoded);
    QCOMPARE(log.lines(), QStringList(TestSupport::debugLine(line)));
    if (!image.isNull())
        QVERIFY(qAbs(qRed(image.pixel(1870, 1870)) - 200) <= 3);
}

void TestPageFormats::memoryBudget_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QImage>("expected"); // null: refused
    QTest::addColumn<int>("mostGrowth"); // of the resident memory while reading, in MiB

    // Pages within the pixel budget. libjxl writes a lossless page into the
    // output group by group; it keeps whole planes of a lossy page with alpha,
    // which the header tells, and of a squeezed one, which it does not.
    const int limit = int(ImageFormatSupport::memoryLimit >> 20), unread = 16, stopped = limit + 32;
    const QImage page = TestSupport::drawing(4000, 4000);
    const QImage clear = TestSupport::translucent(3000, 4500);
    const QString pagePng = file(page);
    QTest::newRow("JPEG XL lossless 4000 x 4000 opens")
        << jxl(pagePng, { "-d", "0", "-e", "1" }) << page << limit;
    QTest::newRow("JPEG XL lossless 3000 x 4500 with alpha opens")
        << jxl(file(clear), { "-d", "0", "-e", "1" }) << clear << limit;
    QTest::newRow("JPEG XL lossy 3000 x 4500 with alpha is refused unread")
        << jxl(file(clear), { "-d", "1", "-e", "3" }) << QImage() << unread;
    QTest::newRow("JPEG XL progressive lossless 4000 x 4000 is stopped at the limit")
        << jxl(pagePng, { "-d", "0", "-p", "-e", "1" }) << QImage() << stopped;
}

void TestPageFormats::memoryBudget()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QImage, expected);
    QFETCH(int, mostGrowth);

    QVERIFY(!bytes.isEmpty());
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const bool counted = resetResidentPeak();
    const int before = residentMb("VmRSS");
    const QImage image = reader.read();
    const int growth = residentMb("VmHWM") - before;
    QCOMPARE(image.isNull(), expected.isNull());
    if (!image.isNull())
        QCOMPARE(TestSupport::meanDifference(image, expected), 0.0);
    if (!counted || before < 0)
        QSKIP("Linux's peak resident size cannot be reset here");
    qDebug("grew by %d MiB", growth);
    QVERIFY2(growth <= mostGrowth,
        qPrintable(QString("grew by %1 MiB, more than %2").arg(growth).arg(mostGrowth)));
}

void TestPageFormats::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("scaled"); // invalid: the full size
    QTest::addColumn<QSize>("claimed"); // invalid: no size known
    QTest::addColumn<bool>("fails"); // false: garbage pixels are allowed, of the claimed size

    const QImage page = TestSupport::drawing(64, 48);
    const QSize size(64, 48), unknown, full;
    const QByteArray garbage(48, '\xa5');
    // Unless told otherwise: of the page's size, read at full size, and failing.
    const auto row = [&](const char* name, const QByteArray& bytes, const QSize& claimed,
                         bool fails = true, const QSize& scaled = QSize()) {
        QTest::newRow(name) << bytes << scaled << claimed << fails;
    };

    const QByteArray lossy = webp({ page }, { "-q", "90" });
    const QByteArray lossless = webp({ page });
    const QByteArray animation = webp({ TestSupport::drawing(64, 48, Qt::red), page });
    // Where the image chunks start, and the frames of the animation.
    const int vp8 = lossy.indexOf("VP8 "), vp8l = lossless.indexOf("VP8L");
    const int firstFrame = animation.indexOf("ANMF");
    const int secondFrame = animation.indexOf("ANMF", firstFrame + 4);
    // A lossy frame header holds 14-bit sizes after its tag and start code; a
    // lossless header width - 1 and height - 1 in 14 bits each after its
    // signature byte, so that all ones claim 16384 × 16384.
    const QByteArray losslessHuge = patched(
        lossless, vp8l + 9, QByteArray("\xff\xff\xff") + char(lossless.at(vp8l + 12) | 0x0f));
    row("empty", QByteArray(), unknown);
    row("WebP signature alone", lossless.left(12), unknown);
    // Lossy and lossless data go through the same decoding call.
    row("WebP lossy truncated", lossy.left(lossy.size() / 2), size);
    row("WebP chunk longer than the file", patched(lossy, vp8 + 4, "\xf0\xff\xff\x7f"), unknown);
    row("WebP of an unknown image chunk", patched(lossless, vp8l, "VP8Z"), unknown);
    row("WebP lossy data garbled", patched(lossy, lossy.size() / 2, garbage.left(16)), size, false);
    row("WebP of zero width", patched(lossy, vp8 + 14, QByteArray("\0\0\x30\0", 4)), unknown);
    // 16384 × 16384 × 4 bytes is a gigabyte: refused before any allocation.
    row("WebP lossless claiming 16384 x 16384", losslessHuge, QSize(16384, 16384));
    row("the same, scaled: lossless keeps the whole image while decoding", losslessHuge,
        QSize(16384, 16384), true, QSize(1000, 1000));
    row("WebP lossy claiming 16383 x 16383", patched(lossy, vp8 + 14, "\xff\x3f\xff\x3f"),
        QSize(16383, 16383));
    row("WebP animation with a garbled first frame", patched(animation, firstFrame + 40, garbage),
        size, false);
    row("WebP animation cut in its second frame", animation.left(secondFrame + 30), size);

    const QByteArray lossyAvif = avif({ page });
    // The container's image size property: its type, a version, then two 32-bit sides.
    const int ispe = lossyAvif.indexOf("ispe") + 8;
    // libavif parses the container whole, so that its end must be there.
    row("AVIF truncated", lossyAvif.left(lossyAvif.size() * 2 / 3), unknown);
    row("AVIF coded data garbled", patched(lossyAvif, lossyAvif.size() - 60, garbage), size, false);
    row("AVIF of zero width", patched(lossyAvif, ispe, QByteArray(4, '\0')), unknown);
    // Past libavif's limit on a side: refused while parsing.
    row("AVIF claiming 65,500 x 65,500",
        patched(lossyAvif, ispe, QByteArray("\0\0\xff\xdc\0\0\xff\xdc", 8)), unknown);
    // Smaller than its AV1 frame: dav1d refuses the frame.
    row("AVIF claiming less than its frame",
        patched(lossyAvif, ispe, QByteArray("\0\0\0\x08\0\0\0\x08", 8)), QSize(8, 8));

    const QByteArray lossyJxl = jxl(file(page));
    row("JPEG XL truncated", lossyJxl.left(lossyJxl.size() * 2 / 3), size);
    row("JPEG XL coded data garbled", patched(lossyJxl, lossyJxl.size() / 2, garbage), size, false);
    row("JPEG XL signature alone", lossyJxl.left(2), unknown);
    // 16 GiB of pixels: refused before any allocation.
    row("JPEG XL codestream claiming 65,500 x 65,500", codestreamClaiming(65500),
        QSize(65500, 65500));
    // 2^60 pixels: its memory must not be reckoned in 64 bits at all.
    row("JPEG XL codestream claiming 2^30 x 2^30", codestreamClaiming(1u << 30),
        QSize(1 << 30, 1 << 30));
}

void TestPageFormats::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, scaled);
    QFETCH(QSize, claimed);
    QFETCH(bool, fails);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    QCOMPARE(reader.canRead(), !bytes.isEmpty());
    QCOMPARE(reader.size(), claimed);
    if (scaled.isValid())
        reader.setScaledSize(scaled);
    const QImage image = reader.read();
    if (fails)
        QVERIFY(image.isNull());
    else if (!image.isNull())
        QCOMPARE(image.size(), scaled.isValid() ? scaled : claimed);
}

TAMBER_TEST_MAIN(TestPageFormats)
#include "tst_pageformats.moc"
