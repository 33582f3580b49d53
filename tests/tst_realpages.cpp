// SPDX-License-Identifier: MIT
// Pages as people make them, each as page 2 of a CBZ through the archive:
// every PNG colour type and bit depth, plain and interlaced, with alpha, a
// palette's alphas or a colour key; JPEG's codings, samplings, grey and CMYK;
// GIF and WebP. Their pixels are checked against another decoder's.
// tests/realpages/make-pages makes the pages and references with Debian's
// tools on the host before the suite runs (ctest's realpages fixture).

#include "ComicArchive.h"
#include "ComicArchiveFactory.h"
#include "TestSupport.h"

#include <QFileInfo>
#include <QPainter>
#include <QtTest>

#include <nlohmann/json.hpp>

#include <memory>

using TestSupport::MessageLog;

namespace {

const QString pagesDir = QStringLiteral(TAMBER_REALPAGES_DIR);

// JPEG at cjpeg's quality 90 and WebP at cwebp's 80: Qt 5's decoders give
// Pillow's pixels exactly; the device's Qt, whose libjpeg upsamples colour
// its own way, is off by a mean of 0.56 and a 99th percentile of 10 levels on
// 4:2:0 pages. Twice that still fails a page in the wrong colours, sampling
// or block order.
const double lossyMean = 2.0;
const int lossyPercentile99 = 16;

QString rgba(QRgb pixel)
{
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(qRed(pixel))
        .arg(qGreen(pixel))
        .arg(qBlue(pixel))
        .arg(qAlpha(pixel));
}

// A page's reference, 8-bit RGBA row by row, as a non-premultiplied image;
// null when the file does not hold the size's pixels.
QImage reference(const QString& file, const QSize& size)
{
    const QByteArray bytes = TestSupport::readFile(
        pagesDir + QLatin1Char('/') + QFileInfo(file).completeBaseName() + QStringLiteral(".rgba"));
    if (bytes.size() != size.width() * size.height() * 4)
        return QImage();
    QImage image(size, QImage::Format_ARGB32);
    const uchar* p = reinterpret_cast<const uchar*>(bytes.constData());
    for (int y = 0; y < size.height(); ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x, p += 4)
            line[x] = qRgba(p[0], p[1], p[2], p[3]);
    }
    return image;
}

// How a decoded page differs from its reference, channel by channel. Colour
// counts only where either shows it: under alpha 0 an encoder may keep any
// colour, and a decoder may premultiply it away.
struct Difference
{
    double mean = 0;
    int percentile99 = 0;
    int over = 0; // pixels with a channel off by more than the allowance
    QString first; // the first of them, as "(x, y) is ..., the reference ..."
};

Difference compare(const QImage& image, const QImage& expected, int allowance)
{
    Difference result;
    qint64 histogram[256] = {};
    qint64 count = 0;
    const QImage got = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < got.height(); ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(got.constScanLine(y));
        const QRgb* want = reinterpret_cast<const QRgb*>(expected.constScanLine(y));
        for (int x = 0; x < got.width(); ++x) {
            const int a[4] = { qRed(line[x]), qGreen(line[x]), qBlue(line[x]), qAlpha(line[x]) };
            const int b[4] = { qRed(want[x]), qGreen(want[x]), qBlue(want[x]), qAlpha(want[x]) };
            int worst = 0;
            for (int c = a[3] > 0 || b[3] > 0 ? 0 : 3; c < 4; ++c) {
                const int d = qAbs(a[c] - b[c]);
                ++histogram[d], ++count, worst = qMax(worst, d);
            }
            if (worst > allowance && result.over++ == 0)
                result.first = QStringLiteral("(%1, %2) is %3, the reference %4")
                                   .arg(x)
                                   .arg(y)
                                   .arg(rgba(line[x]), rgba(want[x]));
        }
    }
    qint64 sum = 0, seen = 0;
    result.percentile99 = -1;
    for (int d = 0; d < 256; ++d) {
        sum += histogram[d] * d, seen += histogram[d];
        if (result.percentile99 < 0 && seen * 100 >= count * 99)
            result.percentile99 = d;
    }
    result.mean = count ? double(sum) / count : 0;
    return result;
}

// The image composed on white, as the view shows a page.
QImage onWhite(const QImage& image)
{
    QImage shown(image.size(), QImage::Format_RGB32);
    shown.fill(qRgb(255, 255, 255));
    QPainter painter(&shown);
    painter.drawImage(0, 0, image);
    return shown;
}

} // namespace

class TestRealPages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void decodes_data();
    void decodes();
    void renders_data();
    void renders();

private:
    // Each page's columns, from the manifest: rows named after the page kind.
    void pageColumns(const QStringList& only = QStringList());
    // A CBZ whose page 2 is the page file, page 1 an ordinary small PNG;
    // its path, or an empty string.
    QString comic(const QString& file);

    TestSupport::TemporaryDir dir;
    nlohmann::json pages;
    int comics = 0;
};

void TestRealPages::initTestCase()
{
    QVERIFY(dir.isValid());
    const QByteArray manifest = TestSupport::readFile(pagesDir + QStringLiteral("/manifest.json"));
    if (manifest.isEmpty())
        QSKIP("no pages: ctest makes them with tests/realpages/make-pages, which needs "
              "/usr/bin/python3");
    const nlohmann::json parsed = TestSupport::parseJson(manifest);
    const QString skip = TestSupport::jsonText(TestSupport::jsonAt(parsed, "/skip"));
    if (!skip.isEmpty())
        QSKIP(qPrintable(skip));
    pages = TestSupport::jsonAt(parsed, "/pages");
    QVERIFY2(pages.is_array() && !pages.empty(), "the manifest lists no pages");
}

void TestRealPages::pageColumns(const QStringList& only)
{
    QTest::addColumn<QString>("file"); // empty when the page could not be made
    QTest::addColumn<QString>("skip"); // why not
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("lossy");
    QTest::addColumn<QString>("decoder");

    for (const nlohmann::json& page : pages) {
        const QString name = TestSupport::jsonText(TestSupport::jsonAt(page, "/name"));
        if (!only.isEmpty() && !only.contains(name))
            continue;
        const nlohmann::json width = TestSupport::jsonAt(page, "/width");
        const nlohmann::json height = TestSupport::jsonAt(page, "/height");
        QTest::newRow(name.toUtf8().constData())
            << TestSupport::jsonText(TestSupport::jsonAt(page, "/file"))
            << TestSupport::jsonText(TestSupport::jsonAt(page, "/skip"))
            << QSize(width.is_number() ? width.get<int>() : 0,
                   height.is_number() ? height.get<int>() : 0)
            << (TestSupport::jsonAt(page, "/lossy") == nlohmann::json(true))
            << TestSupport::jsonText(TestSupport::jsonAt(page, "/decoder"));
    }
}

QString TestRealPages::comic(const QString& file)
{
    const QByteArray bytes = TestSupport::readFile(pagesDir + QLatin1Char('/') + file);
    const QString path = dir.filePath(QStringLiteral("%1.cbz").arg(++comics));
    const QByteArray second = "p02." + QFileInfo(file).suffix().toLatin1();
    const bool written = !bytes.isEmpty()
        && TestSupport::writeZip(path,
            { { "p01.png", TestSupport::encode(TestSupport::makePage(60, 80), "PNG") },
                { second, bytes } });
    return written ? path : QString();
}

void TestRealPages::decodes_data()
{
    pageColumns();
}

// Exact to a level for lossless pages, 16-bit ones narrowed either way;
// within lossyMean and lossyPercentile99 for JPEG and lossy WebP.
void TestRealPages::decodes()
{
    QFETCH(QString, file);
    QFETCH(QString, skip);
    QFETCH(QSize, size);
    QFETCH(bool, lossy);
    QFETCH(QString, decoder);
    if (!skip.isEmpty())
        QSKIP(qPrintable(skip));
    const QString kind = QString::fromUtf8(QTest::currentDataTag());

    const QString path = comic(file);
    QVERIFY2(!path.isEmpty(), qPrintable(kind + ": no comic of " + file));
    const std::unique_ptr<ComicArchive> archive(ComicArchiveFactory::instance(path));
    QVERIFY(archive.get());
    QImage image;
    QStringList lines;
    {
        const MessageLog log;
        image = archive->data(QStringLiteral("p02.") + QFileInfo(file).suffix());
        lines = log.lines();
    }
    QVERIFY2(!image.isNull(),
        qPrintable(kind + ": the archive decodes no image"
            + (lines.isEmpty() ? QString() : "; it says: " + lines.join(" | "))));
    QVERIFY2(image.size() == size,
        qPrintable(QStringLiteral("%1: %2 x %3, the reference %4 x %5")
                       .arg(kind)
                       .arg(image.width())
                       .arg(image.height())
                       .arg(size.width())
                       .arg(size.height())));

    const QImage expected = reference(file, size);
    QVERIFY2(!expected.isNull(), qPrintable(kind + ": no reference of " + file));
    const Difference difference = compare(image, expected, lossy ? lossyPercentile99 : 1);
    if (lossy) {
        QVERIFY2(difference.mean <= lossyMean && difference.percentile99 <= lossyPercentile99,
            qPrintable(QStringLiteral("%1: mean difference %2 (at most %3), 99th percentile %4 "
                                      "(at most %5) from %6's; first pixel further off: %7")
                           .arg(kind)
                           .arg(difference.mean, 0, 'f', 2)
                           .arg(lossyMean)
                           .arg(difference.percentile99)
                           .arg(lossyPercentile99)
                           .arg(decoder, difference.first)));
    } else {
        QVERIFY2(difference.over == 0,
            qPrintable(QStringLiteral("%1: %2 pixels differ from %3's by more than one level; "
                                      "the first, %4")
                           .arg(kind)
                           .arg(difference.over)
                           .arg(decoder, difference.first)));
    }
}

void TestRealPages::renders_data()
{
    pageColumns({ QStringLiteral("PNG palette 8-bit, transparent"),
        QStringLiteral("PNG RGB 16-bit, colour key") });
}

// The whole way through the program: tamber render shows the page on white,
// at its own size on a screen of that size.
void TestRealPages::renders()
{
    QFETCH(QString, file);
    QFETCH(QString, skip);
    QFETCH(QSize, size);
    if (!skip.isEmpty())
        QSKIP(qPrintable(skip));
    const QString kind = QString::fromUtf8(QTest::currentDataTag());

    const QString book = comic(file);
    QVERIFY(!book.isEmpty());
    const TestSupport::Tamber tamber(dir.path());
    QCOMPARE(tamber.run({ QStringLiteral("import"), book }).status, 0);
    const QString shot = dir.filePath(QStringLiteral("shown.png"));
    const TestSupport::Tamber::Run run = tamber.run({ QStringLiteral("render"), book,
        QStringLiteral("--page"), QStringLiteral("2"), QStringLiteral("--size"),
        QStringLiteral("%1x%2").arg(size.width()).arg(size.height()), QStringLiteral("-o"), shot });
    QVERIFY2(run.status == 0, qPrintable(kind + ": tamber render says: " + run.err));

    const QImage expected = reference(file, size);
    QVERIFY(!expected.isNull());
    const QImage shown(shot);
    QCOMPARE(shown.size(), size);
    const Difference difference = compare(shown, onWhite(expected), 1);
    QVERIFY2(difference.over == 0,
        qPrintable(QStringLiteral("%1: %2 pixels shown differ from the reference on white; "
                                  "the first, %3")
                       .arg(kind)
                       .arg(difference.over)
                       .arg(difference.first)));
}

TAMBER_TEST_MAIN(TestRealPages)
#include "tst_realpages.moc"
