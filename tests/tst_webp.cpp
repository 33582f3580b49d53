// WebP pages through the image plug-in in bin/imageformats, as the comic
// plug-in meets them: decoding, scaled decoding, the pixel budget, the file
// types, a WebP comic through the parser, and broken files.
// Written for Qt 4.8 and Qt 5 alike.

#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "ComicsReaderPlugin.h"
#include "NullArchive.h"
#include "TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QImageReader>
#include <QPainter>
#include <QtTest>

#include <webp/encode.h>
#include <webp/mux.h>

#include <cstdlib>
#include <cstring>

namespace {

// A folder of this run's files, removed with everything in it.
class ScratchDir
{
public:
    ScratchDir()
        : path(QDir::tempPath() + QLatin1String("/tst_webp-")
            + QString::number(QCoreApplication::applicationPid()))
    {
        QDir().mkpath(path);
    }
    ~ScratchDir() { remove(path); }

    QString filePath(const QString& name) const { return path + QLatin1Char('/') + name; }

private:
    static void remove(const QString& folder)
    {
        QDirIterator entries(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        while (entries.hasNext()) {
            const QString entry = entries.next();
            if (entries.fileInfo().isDir() && !entries.fileInfo().isSymLink())
                remove(entry);
            else
                QFile::remove(entry);
        }
        QDir().rmdir(folder);
    }

    QString path;
};

enum Encoding { Lossy, Lossless };

// libwebp's simple encoder over the image's 32-bit pixels, which are BGRA
// bytes on the little-endian machines this runs on.
QByteArray encodeWebp(const QImage& image, Encoding encoding, int quality = 90)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    uint8_t* output = 0;
    const size_t size = encoding == Lossless
        ? WebPEncodeLosslessBGRA(
            argb.constBits(), argb.width(), argb.height(), argb.bytesPerLine(), &output)
        : WebPEncodeBGRA(argb.constBits(), argb.width(), argb.height(), argb.bytesPerLine(),
            float(quality), &output);
    const QByteArray bytes(reinterpret_cast<const char*>(output), int(size));
    WebPFree(output);
    return bytes;
}

// An animation of lossless frames, 100 ms each.
QByteArray encodeAnimation(const QList<QImage>& frames)
{
    const QSize size = frames.first().size();
    WebPAnimEncoderOptions options;
    WebPAnimEncoderOptionsInit(&options);
    WebPAnimEncoder* encoder = WebPAnimEncoderNew(size.width(), size.height(), &options);
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = 1;
    int timestamp = 0;
    for (int i = 0; i < frames.size(); ++i, timestamp += 100) {
        const QImage argb = frames.at(i).convertToFormat(QImage::Format_ARGB32);
        WebPPicture picture;
        WebPPictureInit(&picture);
        picture.use_argb = 1;
        picture.width = argb.width();
        picture.height = argb.height();
        WebPPictureImportBGRA(&picture, argb.constBits(), argb.bytesPerLine());
        WebPAnimEncoderAdd(encoder, &picture, timestamp, &config);
        WebPPictureFree(&picture);
    }
    WebPAnimEncoderAdd(encoder, 0, timestamp, 0);
    WebPData data;
    WebPDataInit(&data);
    WebPAnimEncoderAssemble(encoder, &data);
    const QByteArray bytes(reinterpret_cast<const char*>(data.bytes), int(data.size));
    WebPDataClear(&data);
    WebPAnimEncoderDelete(encoder);
    return bytes;
}

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
        const QRgb* p = reinterpret_cast<const QRgb*>(first.constScanLine(y));
        const QRgb* q = reinterpret_cast<const QRgb*>(second.constScanLine(y));
        for (int x = 0; x < first.width(); ++x)
            sum += std::abs(qRed(p[x]) - qRed(q[x])) + std::abs(qGreen(p[x]) - qGreen(q[x]))
                + std::abs(qBlue(p[x]) - qBlue(q[x])) + std::abs(qAlpha(p[x]) - qAlpha(q[x]));
    }
    return double(sum) / (4.0 * first.width() * first.height());
}

// Where the first chunk of the given kind starts (its four-letter name); -1 if none.
int chunk(const QByteArray& bytes, const char* fourcc)
{
    return bytes.indexOf(QByteArray(fourcc, 4), 12);
}

void putLittleEndian32(QByteArray& bytes, int at, quint32 value)
{
    for (int i = 0; i < 4; ++i)
        bytes[at + i] = char((value >> (8 * i)) & 0xff);
}

quint32 littleEndian32(const QByteArray& bytes, int at)
{
    quint32 value = 0;
    for (int i = 3; i >= 0; --i)
        value = (value << 8) | quint8(bytes.at(at + i));
    return value;
}

// A lossless file whose header claims another size: the 14-bit fields after
// the VP8L chunk's signature byte hold width - 1 and height - 1.
QByteArray losslessClaiming(QByteArray bytes, int width, int height)
{
    const int header = chunk(bytes, "VP8L") + 9;
    const quint32 rest = littleEndian32(bytes, header) & 0xf0000000u;
    putLittleEndian32(bytes, header, rest | quint32(width - 1) | (quint32(height - 1) << 14));
    return bytes;
}

// A lossy file whose frame header claims another size: 14-bit fields after
// the three-byte frame tag and the three-byte start code.
QByteArray lossyClaiming(QByteArray bytes, int width, int height)
{
    const int header = chunk(bytes, "VP8 ") + 14;
    bytes[header] = char(width & 0xff);
    bytes[header + 1] = char((width >> 8) & 0x3f);
    bytes[header + 2] = char(height & 0xff);
    bytes[header + 3] = char((height >> 8) & 0x3f);
    return bytes;
}

// Every byte in [from, from + count) inverted.
QByteArray inverted(QByteArray bytes, int from, int count)
{
    for (int i = from; i < from + count && i < bytes.size(); ++i)
        bytes[i] = char(~bytes.at(i));
    return bytes;
}

struct Decoded
{
    bool recognised;
    QSize claimed;
    QImage image;
};

// Through Qt's image reader on a buffer, with the format named, as the
// archives read entries.
Decoded readWebp(const QByteArray& bytes, const QSize& scaled = QSize())
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "webp");
    Decoded decoded;
    decoded.recognised = reader.canRead();
    decoded.claimed = reader.size();
    if (scaled.isValid())
        reader.setScaledSize(scaled);
    decoded.image = reader.read();
    return decoded;
}

// Collects what the parser announces. Its records travel by non-const
// reference, which QSignalSpy cannot hold.
class Announcements : public QObject
{
    Q_OBJECT

public:
    explicit Announcements(ComicsReaderParser& parser)
    {
        connect(&parser, SIGNAL(pageletParsed(Pagelet&)), SLOT(pagelet(Pagelet&)));
        connect(&parser, SIGNAL(volumeParsed(Volume&, bool, bool)), SLOT(volume(Volume&)));
    }

    QStringList pages;
    int volumes = 0;

private slots:
    void pagelet(Pagelet& pagelet) { pages << pagelet.getId(); }
    void volume(Volume&) { ++volumes; }
};

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
    void fileTypesFollowQtsFormatList();
    void comicImportsInPageOrder();
    void badInput_data();
    void badInput();

private:
    ScratchDir dir;
};

void TestWebp::initTestCase()
{
    QVERIFY2(QImageReader::supportedImageFormats().contains("webp"),
        "no webp image plug-in in the library paths; is bin/imageformats/libqwebp.so built?");
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
    QList<QImage> frames;
    frames << drawing(120, 90, Qt::red) << drawing(120, 90, Qt::blue) << drawing(120, 90);
    const QByteArray animation = encodeAnimation(frames);
    const QSize full;
    const int opaque = QImage::Format_RGB32;
    const int alpha = QImage::Format_ARGB32;

    QTest::newRow("lossless page is pixel-exact")
        << encodeWebp(page, Lossless) << page << full << opaque << 0.0;
    QTest::newRow("lossless alpha is exact and not premultiplied")
        << encodeWebp(clear, Lossless) << clear << full << alpha << 0.0;
    // Quality 90 on flat colour, gradients and ink lines: about one level off.
    QTest::newRow("lossy page within 3 levels of 255")
        << encodeWebp(page, Lossy) << page << full << opaque << 3.0;
    QTest::newRow("lossy with alpha within 3 levels")
        << encodeWebp(clear, Lossy) << clear << full << alpha << 3.0;
    // Scaled by libwebp while decoding; a smooth scale of the source is the yardstick.
    QTest::newRow("lossy page at half size")
        << encodeWebp(page, Lossy) << page << QSize(150, 198) << opaque << 6.0;
    QTest::newRow("lossless page at another aspect ratio")
        << encodeWebp(page, Lossless) << page << QSize(100, 300) << opaque << 6.0;
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

    QBuffer buffer;
    buffer.setData(bytes);
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
        << "page.png" << encodeWebp(page, Lossy) << QByteArray("webp");
#endif
    QTest::newRow("WebP without a suffix")
        << "page" << encodeWebp(page, Lossless) << QByteArray("webp");
    QTest::newRow("PNG under a .webp name")
        << "png.webp" << TestSupport::encode(page, "PNG") << QByteArray("png");
    QByteArray wave("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0", 20);
    wave += QByteArray(20, '\0');
    QTest::newRow("a RIFF of another kind") << "sound.webp" << wave << QByteArray();
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
    const QString path = dir.filePath(QLatin1String("big.webp"));
    QVERIFY(TestSupport::writeFile(path, encodeWebp(big, Lossy, 50)));

    TestSupport::MessageLog log;
    const QImage image = NullArchive(path).data(path);
    QCOMPARE(image.size(), QSize(3750, 3750));
    // Qt 4 ends a debug line with a blank.
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(log.lines().first().trimmed(),
        QString::fromLatin1("Image too big, scaling to QSize(3750, 3750)"));
    const QImage centre = image.copy(1870, 1870, 10, 10);
    QImage flat(centre.size(), QImage::Format_RGB32);
    flat.fill(QColor(200, 180, 160).rgb());
    QVERIFY(meanDifference(centre, flat) <= 3.0);
}

void TestWebp::fileTypesFollowQtsFormatList()
{
    // Wherever Qt's sorted list puts webp, the plug-in's lists put it there too.
    const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    const int at = formats.indexOf("webp");
    QVERIFY(at >= 0);
    ComicsReaderPlugin plugin;
    QCOMPARE(plugin.mimeTypes().indexOf(QLatin1String("image/webp")), at);
    QCOMPARE(plugin.fileExtensions().indexOf(QLatin1String("*.webp")), at + 2);
    QVERIFY(ComicsReaderParser::isSupportedImage(QLatin1String("Chapter 1/P01.WEBP")));
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    QVERIFY(QImageReader::supportedMimeTypes().contains("image/webp"));
#endif
}

void TestWebp::comicImportsInPageOrder()
{
    // Lossy and lossless pages, stored out of order, beside a PNG page.
    QList<TestSupport::ZipEntry> entries;
    entries << TestSupport::ZipEntry("p10.webp", encodeWebp(drawing(60, 80), Lossless))
            << TestSupport::ZipEntry("p02.webp", encodeWebp(drawing(60, 80), Lossy))
            << TestSupport::ZipEntry("p01.webp", encodeWebp(translucent(60, 80), Lossless))
            << TestSupport::ZipEntry("p03.png", TestSupport::encode(drawing(60, 80), "PNG"))
            << TestSupport::ZipEntry("notes.txt", "x");
    const QString comic = dir.filePath(QLatin1String("webp.cbz"));
    QVERIFY(TestSupport::writeZip(comic, entries));

    ComicsReaderParser parser;
    Announcements announced(parser);
    parser.parse(comic);
    QStringList expected;
    expected << comic + QLatin1String("/p01.webp") << comic + QLatin1String("/p02.webp")
             << comic + QLatin1String("/p03.png") << comic + QLatin1String("/p10.webp");
    QCOMPARE(announced.pages, expected);
    QCOMPARE(announced.volumes, 1);

    ComicZipArchive archive(comic);
    foreach (const QString& page, expected)
        QCOMPARE(archive.data(page.mid(comic.size() + 1)).size(), QSize(60, 80));
}

void TestWebp::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("scaled");
    QTest::addColumn<bool>("recognised");
    QTest::addColumn<bool>("fails"); // false: garbage pixels are allowed, of the claimed size

    const QByteArray lossy = encodeWebp(drawing(64, 48), Lossy);
    const QByteArray lossless = encodeWebp(drawing(64, 48), Lossless);
    QList<QImage> frames;
    frames << drawing(64, 48, Qt::red) << drawing(64, 48, Qt::blue);
    const QByteArray animation = encodeAnimation(frames);
    const int firstFrame = chunk(animation, "ANMF");
    const int secondFrame = animation.indexOf("ANMF", firstFrame + 4);
    const QSize full;

    QTest::newRow("empty") << QByteArray() << full << false << true;
    QTest::newRow("signature alone") << lossy.left(12) << full << true << true;
    QTest::newRow("truncated lossy") << lossy.left(lossy.size() / 2) << full << true << true;
    QTest::newRow("truncated lossless")
        << lossless.left(lossless.size() / 2) << full << true << true;
    QByteArray wave("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0", 20);
    QTest::newRow("RIFF of another kind") << wave + QByteArray(20, '\0') << full << false << true;
    QByteArray oversized = lossy;
    putLittleEndian32(oversized, chunk(lossy, "VP8 ") + 4, 0x7ffffff0u);
    QTest::newRow("chunk longer than the file") << oversized << full << true << true;
    QByteArray unknown = lossless;
    unknown.replace(chunk(lossless, "VP8L"), 4, "VP8Z");
    QTest::newRow("unknown image chunk") << unknown << full << true << true;
    QTest::newRow("corrupted lossy data")
        << inverted(lossy, lossy.size() / 2, 16) << full << true << false;
    QTest::newRow("corrupted lossless data")
        << inverted(lossless, lossless.size() / 2, 16) << full << true << false;
    QTest::newRow("zero width") << lossyClaiming(lossy, 0, 48) << full << true << true;
    // 16383 × 16383 × 4 bytes is a gigabyte: refused before any allocation.
    QTest::newRow("lossless header claiming 16383 x 16383")
        << losslessClaiming(lossless, 16383, 16383) << full << true << true;
    QTest::newRow("the same, scaled: lossless keeps the whole image while decoding")
        << losslessClaiming(lossless, 16383, 16383) << QSize(1000, 1000) << true << true;
    QTest::newRow("lossy header claiming 16383 x 16383")
        << lossyClaiming(lossy, 16383, 16383) << full << true << true;
    QTest::newRow("animation with a corrupted first frame")
        << inverted(animation, firstFrame + 40, 32) << full << true << false;
    QTest::newRow("animation cut in its second frame")
        << animation.left(secondFrame + 30) << full << true << true;
}

void TestWebp::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, scaled);
    QFETCH(bool, recognised);
    QFETCH(bool, fails);

    const Decoded decoded = readWebp(bytes, scaled);
    QCOMPARE(decoded.recognised, recognised);
    if (fails)
        QVERIFY(decoded.image.isNull());
    else if (!decoded.image.isNull())
        QCOMPARE(decoded.image.size(), scaled.isValid() ? scaled : decoded.claimed);
}

QTEST_MAIN(TestWebp)
#include "tst_webp.moc"
