// SPDX-License-Identifier: MIT
#include "ComicArchive.h"

#include <QBuffer>
#include <QImageReader>
#include <QtEndian>

namespace {

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
    const QSize screen(qFromLittleEndian<quint16>(bytes + 6), qFromLittleEndian<quint16>(bytes + 8));
    return size.isValid() ? size.expandedTo(screen) : screen;
}

bool ComicArchive::fitsMemoryLimit(QImageReader& reader)
{
    // Qt has no allocation limit of its own: it decodes a header that claims
    // 65,500 × 65,500 pixels into 16 GiB.
    const QSize size = workingSize(reader, imageSize(reader));
    if (!size.isValid())
        return true;
    // 32 bits a pixel where the reader cannot tell its format.
    const QImage::Format format = reader.imageFormat();
    const qint64 bits = format == QImage::Format_Invalid ? 32 : QImage(1, 1, format).depth();
    return (size.width() * bits + 7) / 8 * size.height() <= memoryLimit;
}

QImage ComicArchive::decode(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return fitsMemoryLimit(reader) ? reader.read() : QImage();
}
