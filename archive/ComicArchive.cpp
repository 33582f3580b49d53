// SPDX-License-Identifier: MIT
#include "ComicArchive.h"

#include <QBuffer>
#include <QDebug>
#include <QImageReader>
#include <QtEndian>

#ifdef TAMBER_KEYED_PNG
#include "KeyedPng.h"
#endif

namespace {

// The sizes Qt's JPEG reader decodes to directly, as eighths of the whole.
// Qt 5 asks libjpeg for any M/8; Qt 4 only for 1/2, 1/4 and 1/8, and decodes
// whole for anything between.
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
const int jpegEighths[] = { 7, 6, 5, 4, 3, 2, 1 };
#else
const int jpegEighths[] = { 4, 2, 1 };
#endif

qint64 pixels(const QSize& size)
{
    return qint64(size.width()) * size.height();
}

// The largest size within the budget that the decoder makes without scaling
// afterwards; invalid when even its smallest is over. The request is rounded
// down, which makes Qt pick exactly that fraction; libjpeg rounds its output
// up, so the output is what is measured.
QSize reducedSize(const QByteArray& format, const QSize& full)
{
    if (format == "jpeg") {
        for (const int eighths : jpegEighths) {
            const QSize output(int((full.width() * qint64(eighths) + 7) / 8),
                int((full.height() * qint64(eighths) + 7) / 8));
            if (pixels(output) <= ComicArchive::pixelBudget)
                return QSize(int(qMax<qint64>(1, full.width() * qint64(eighths) / 8)),
                    int(qMax<qint64>(1, full.height() * qint64(eighths) / 8)));
        }
        return QSize();
    }
    // Drawings and WebP decode at any size: a quarter smaller a step, as the
    // single-image file does.
    QSize size = full;
    do {
        size = QSize(int(size.width() * 0.75), int(size.height() * 0.75));
    } while (pixels(size) > ComicArchive::pixelBudget);
    return size;
}

// The size the decoder allocates. Drawings render at the scaled size, and
// libwebp decodes at it (our WebP plug-in bounds what it needs besides). Qt's
// JPEG decoder shrinks by eighths while decoding, to no less than the scaled
// size; the power of two below the ratio never comes out smaller than that.
// Every other decoder, PNG's included, decodes in full and scales afterwards.
QSize workingSize(QImageReader& reader, const QSize& full)
{
    const QSize scaled = reader.scaledSize();
    if (!full.isValid() || !scaled.isValid() || scaled.isEmpty())
        return full;
    const QByteArray format = reader.format();
    if (format.startsWith("svg") || format == "webp")
        return scaled;
    if (format != "jpeg")
        return full;
    const int ratio = qMin(full.width() / scaled.width(), full.height() / scaled.height());
    const int denominator = ratio >= 8 ? 8 : ratio >= 4 ? 4 : ratio >= 2 ? 2 : 1;
    return QSize((full.width() + denominator - 1) / denominator,
        (full.height() + denominator - 1) / denominator);
}

} // namespace

ComicArchive::ComicArchive(const QString&) { }

ComicArchive::~ComicArchive() = default;

QSize ComicArchive::imageSize(QImageReader& reader)
{
    const QSize size = reader.size();
    QIODevice* device = reader.device();
    if (reader.format() != "gif" || !device || device->isSequential())
        return size;
    // Qt's GIF reader reports the first frame's size but decodes to the whole
    // logical screen, whose size follows the six-byte signature.
    const qint64 position = device->pos();
    device->seek(0);
    const QByteArray header = device->read(10);
    device->seek(position);
    if (header.size() < 10)
        return size;
    const uchar* bytes = reinterpret_cast<const uchar*>(header.constData());
    const QSize screen(
        qFromLittleEndian<quint16>(bytes + 6), qFromLittleEndian<quint16>(bytes + 8));
    return size.isValid() ? size.expandedTo(screen) : screen;
}

bool ComicArchive::decodesReduced(QImageReader& reader)
{
    const QByteArray format = reader.format();
    return reader.supportsOption(QImageIOHandler::ScaledSize)
        && (format == "jpeg" || format == "webp" || format.startsWith("svg"));
}

bool ComicArchive::fitsMemoryLimit(QImageReader& reader)
{
    // Qt has no allocation limit of its own: it decodes a header that claims
    // 65,500 × 65,500 pixels into 16 GiB. Counted at 32 bits a pixel: Qt 4's
    // readers spoil a palette PNG's decode when asked for its format first.
    const QSize size = workingSize(reader, imageSize(reader));
    return !size.isValid() || pixels(size) * 4 <= memoryLimit;
}

QImage ComicArchive::decode(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);

    const QSize size = imageSize(reader);
    if (size.isValid() && pixels(size) > pixelBudget) {
        const QSize reduced = decodesReduced(reader) ? reducedSize(reader.format(), size) : QSize();
        if (!reduced.isValid()) {
            qDebug() << "Image too big and scaling not supported, bailing!";
            return QImage();
        }
        qDebug() << "Image too big, scaling to" << reduced;
        reader.setScaledSize(reduced);
    }
    if (!fitsMemoryLimit(reader))
        return QImage();
#ifdef TAMBER_KEYED_PNG
    if (KeyedPng::isDeepColourWithKey(bytes))
        return KeyedPng::read(bytes);
#endif
    return reader.read();
}
