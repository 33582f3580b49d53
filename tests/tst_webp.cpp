// SPDX-License-Identifier: MIT
// WebP pages through the image plug-in in bin/imageformats, as the comic
// plug-in meets them: decoding, scaled decoding, the pixel budget, the file
// types, a WebP comic through the parser, and broken files. The files are
// made by libwebp's own tools.

#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "NullArchive.h"
#include "TestSupport.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QProcess>
#include <QtTest>

#include <cstdlib>

namespace {

// A page with gradients, ink and flat panels: enough detail that a lossy
// decoder's error shows, and no two rows alike.
QImage drawing(int width, int height, const QColor& ink = Qt::black)
{
    QImage image = TestSupport::makePage(width, height, ink);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, width, height);
    gradient.setColorAt(0, QColor(250, 200, 80));
    gradient.setColorAt(1, QColor(40, 90, 200));
    painter.fillRect(QRect(width / 8, height / 8, width / 2, height / 3), gradient);
    painter.setPen(QPen(ink, 2));
    for (int x = 0; x < width; x += 7)
        painter.drawLine(x, height / 2, width - x, height - 1);
    return image;
}

// The same drawing seen through a window whose opacity falls from left to right.
QImage translucent(int width, int height)
{
    QImage image = drawing(width, height).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = qRgba(qRed(line[x]), qGreen(line[x]), qBlue(line[x]), 255 * x / (width - 1));
    }
    return image;
}

// The mean difference of corresponding channels, over premultiplied pixels
// (so that colour under transparency, which an encoder may change, counts
// for nothing); -1 when the sizes differ.
double meanDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull())
        return -1;
    const QImage first = a.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage second = b.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    qint64 sum = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            const QRgb p = first.pixel(x, y), q = second.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q))
                + std::abs(qBlue(p) - qBlue(q)) + std::abs(qAlpha(p) - qAlpha(q));
        }
    }
    return double(sum) / (4.0 * first.width() * first.height());
}

// bytes with the bytes from at on replaced by with.
QByteArray patched(QByteArray bytes, int at, const QByteArray& with)
{
    return bytes.replace(at, with.size(), with);
}

} // namespace

class TestWebp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void decodes_data();
    void decodes();
    void detectedByContent_data();
    void detectedByContent();
    void largePageDecodesWithinPixelBudget();
    void comicImportsInPageOrder();
    void badInput_data();
    void badInput();

private:
    // cwebp's file of one frame (options such as -lossless or -q 90), or
    // img2webp's animation of lossless frames, 100 ms each.
    QByteArray webp(const QList<QImage>& frames, QStringList options = { "-lossless" });

    TestSupport::TemporaryDir dir;
};

QByteArray TestWebp::webp(const QList<QImage>& frames, QStringList options)
{
    for (int i = 0; i < frames.size(); ++i) {
        options << dir.filePath(QStringLiteral("frame%1.png").arg(i));
        frames.at(i).save(options.last());
    }
    if (frames.size() == 1)
        options << "-quiet";
    const QString output = dir.filePath("out.webp");
    QFile::remove(output);
    QProcess::execute(frames.size() > 1 ? "img2webp" : "cwebp", options << "-o" << output);
    return TestSupport::readFile(output);
}

void TestWebp::initTestCase()
{
    QVERIFY2(QImageReader::supportedImageFormats().contains("webp"),
        "no webp image plug-in in the library paths; is bin/imageformats/libqwebp.so built?");
    QVERIFY(ComicsReaderParser::isSupportedImage(QLatin1String("Chapter 1/P01.WEBP")));
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    QVERIFY(QImageReader::supportedMimeTypes().contains("image/webp"));
#endif
}

void TestWebp::decodes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QImage>("source");
    QTest::addColumn<QSize>("scaled"); // invalid: the full size
    QTest::addColumn<int>("format");
    QTest::addColumn<double>("tolerance"); // mean difference per channel, of 255

    const QImage page = drawing(301, 397);
    const QImage clear = translucent(211, 157);
    const QList<QImage> frames { drawing(120, 90, Qt::red), drawing(120, 90, Qt::blue),
        drawing(120, 90) };
    const QByteArray animation = webp(frames);
    const QStringList lossy { "-q", "90" };
    const QSize full;
    const int opaque = QImage::Format_RGB32;
    const int alpha = QImage::Format_ARGB32;

    QTest::newRow("lossless page is pixel-exact")
        << webp({ page }) << page << full << opaque << 0.0;
    QTest::newRow("lossless alpha is exact and not premultiplied")
        << webp({ clear }) << clear << full << alpha << 0.0;
    // Quality 90 on flat colour, gradients and ink lines: about one level off.
    QTest::newRow("lossy page within 3 levels of 255")
        << webp({ page }, lossy) << page << full << opaque << 3.0;
    QTest::newRow("lossy with alpha within 3 levels")
        << webp({ clear }, lossy) << clear << full << alpha << 3.0;
    // Scaled by libwebp while decoding, here and for the animation; a smooth
    // scale of the source is the yardstick.
    QTest::newRow("lossy page at half size")
        << webp({ page }, lossy) << page << QSize(150, 198) << opaque << 6.0;
    QTest::newRow("animation shows its first frame")
        << animation << frames.first() << full << alpha << 0.0;
    QTest::newRow("animation's first frame scaled")
        << animation << frames.first() << QSize(60, 45) << alpha << 6.0;
}

void TestWebp::decodes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QImage, source);
    QFETCH(QSize, scaled);
    QFETCH(int, format);
    QFETCH(double, tolerance);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "webp");
    // Known from the header, before decoding.
    QCOMPARE(reader.size(), source.size());
    QCOMPARE(int(reader.imageFormat()), format);
    if (scaled.isValid())
        reader.setScaledSize(scaled);

    const QImage image = reader.read();
    QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
    const QImage expected = scaled.isValid()
        ? source.scaled(scaled, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        : source;
    QCOMPARE(image.size(), expected.size());
    QCOMPARE(int(image.format()), format);
    const double difference = meanDifference(image, expected);
    QVERIFY2(difference <= tolerance, qPrintable(QString::number(difference)));
}

void TestWebp::detectedByContent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("format"); // empty: not readable

    const QImage page = drawing(40, 30);
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    // Qt 4 hands a file named .png to its PNG reader without asking it first.
    QTest::newRow("WebP under a .png name")
        << "page.png" << webp({ page }, { "-q", "90" }) << QByteArray("webp");
#endif
    QTest::newRow("WebP without a suffix") << "page" << webp({ page }) << QByteArray("webp");
    QTest::newRow("PNG under a .webp name")
        << "png.webp" << TestSupport::encode(page, "PNG") << QByteArray("png");
    QTest::newRow("a RIFF of another kind")
        << "sound.webp" << QByteArray("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0", 20) + QByteArray(20, '\0')
        << QByteArray();
}

void TestWebp::detectedByContent()
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

void TestWebp::largePageDecodesWithinPixelBudget()
{
    // Over the single-image archive's 4096 × 4096 budget: decoded smaller by
    // libwebp itself, never in full first.
    QImage big(5000, 5000, QImage::Format_RGB32);
    big.fill(QColor(200, 180, 160).rgb());
    const QString path = dir.filePath("big.webp");
    QVERIFY(TestSupport::writeFile(path, webp({ big }, { "-q", "50" })));

    TestSupport::MessageLog log;
    const QImage image = NullArchive(path).data(path);
    QCOMPARE(image.size(), QSize(3750, 3750));
    QCOMPARE(log.lines(),
        QStringList(TestSupport::debugLine("Image too big, scaling to QSize(3750, 3750)")));
    QVERIFY(meanDifference(image.copy(1870, 1870, 10, 10), big.copy(0, 0, 10, 10)) <= 3.0);
}

void TestWebp::comicImportsInPageOrder()
{
    // Lossy and lossless pages, stored out of order, beside a PNG page.
    const QString comic = dir.filePath("webp.cbz");
    QVERIFY(TestSupport::writeZip(comic,
        { { "p10.webp", webp({ drawing(60, 80) }) },
            { "p02.webp", webp({ drawing(60, 80) }, { "-q", "90" }) },
            { "p01.webp", webp({ translucent(60, 80) }) },
            { "p03.png", TestSupport::encode(drawing(60, 80), "PNG") }, { "notes.txt", "x" } }));

    ComicsReaderParser parser;
    TestSupport::Announcements announced(&parser);
    parser.parse(comic);
    QCOMPARE(announced.order, QStringLiteral("ppppv"));
    ComicZipArchive archive(comic);
    const char* const expected[] = { "p01.webp", "p02.webp", "p03.png", "p10.webp" };
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(announced.pages.at(i).getId(), comic + '/' + expected[i]);
        QCOMPARE(archive.data(expected[i]).size(), QSize(60, 80));
    }
}

void TestWebp::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("scaled");
    QTest::addColumn<bool>("recognised");
    QTest::addColumn<bool>("fails"); // false: garbage pixels are allowed, of the claimed size

    const QByteArray lossy = webp({ drawing(64, 48) }, { "-q", "90" });
    const QByteArray lossless = webp({ drawing(64, 48) });
    const QByteArray animation = webp({ drawing(64, 48, Qt::red), drawing(64, 48, Qt::blue) });
    // Where the image chunks start, and the frames of the animation.
    const int vp8 = lossy.indexOf("VP8 "), vp8l = lossless.indexOf("VP8L");
    const int firstFrame = animation.indexOf("ANMF");
    const int secondFrame = animation.indexOf("ANMF", firstFrame + 4);
    const QByteArray garbage(32, '\xa5');
    // A lossy frame header holds 14-bit sizes after its tag and start code; a
    // lossless header width - 1 and height - 1 in 14 bits each after its
    // signature byte, so that all ones claim 16384 × 16384.
    const QByteArray lossyHuge = patched(lossy, vp8 + 14, "\xff\x3f\xff\x3f");
    const QByteArray losslessHuge = patched(
        lossless, vp8l + 9, QByteArray("\xff\xff\xff") + char(lossless.at(vp8l + 12) | 0x0f));
    // Unless told otherwise: recognised as WebP, read at full size, and failing.
    const auto row = [](const char* name, const QByteArray& bytes, bool recognised = true,
                         bool fails = true, const QSize& scaled = QSize()) {
        QTest::newRow(name) << bytes << scaled << recognised << fails;
    };
    row("empty", QByteArray(), false);
    row("signature alone", lossy.left(12));
    // Lossy and lossless data go through the same decoding call.
    row("truncated lossy", lossy.left(lossy.size() / 2));
    row("chunk longer than the file", patched(lossy, vp8 + 4, "\xf0\xff\xff\x7f"));
    row("unknown image chunk", patched(lossless, vp8l, "VP8Z"));
    row("corrupted lossy data", patched(lossy, lossy.size() / 2, garbage.left(16)), true, false);
    row("zero width", patched(lossy, vp8 + 14, QByteArray("\0\0\x30\0", 4)));
    // 16384 × 16384 × 4 bytes is a gigabyte: refused before any allocation.
    row("lossless header claiming 16384 x 16384", losslessHuge);
    row("the same, scaled: lossless keeps the whole image while decoding", losslessHuge, true, true,
        QSize(1000, 1000));
    row("lossy header claiming 16383 x 16383", lossyHuge);
    row("animation with a corrupted first frame", patched(animation, firstFrame + 40, garbage),
        true, false);
    row("animation cut in its second frame", animation.left(secondFrame + 30));
}

void TestWebp::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, scaled);
    QFETCH(bool, recognised);
    QFETCH(bool, fails);

    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "webp");
    QCOMPARE(reader.canRead(), recognised);
    const QSize claimed = reader.size();
    if (scaled.isValid())
        reader.setScaledSize(scaled);
    const QImage image = reader.read();
    if (fails)
        QVERIFY(image.isNull());
    else if (!image.isNull())
        QCOMPARE(image.size(), scaled.isValid() ? scaled : claimed);
}

QTEST_MAIN(TestWebp)
#include "tst_webp.moc"
