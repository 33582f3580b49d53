#include "XwdImage.h"

#include <QtEndian>

namespace {

// The file header: 25 big-endian 32-bit fields, then the window's name.
enum Field {
    HeaderSize,
    FileVersion,
    PixmapFormat,
    PixmapDepth,
    PixmapWidth,
    PixmapHeight,
    XOffset,
    ByteOrder,
    BitmapUnit,
    BitmapBitOrder,
    BitmapPad,
    BitsPerPixel,
    BytesPerLine,
    VisualClass,
    RedMask,
    GreenMask,
    BlueMask,
    BitsPerRgb,
    ColormapEntries,
    ColourCount,
    FieldCount = 25
};

const quint32 zPixmap = 2;
const quint32 trueColour = 4;
const int colourSize = 12;

// The 8-bit channel under mask.
int channel(quint32 pixel, quint32 mask)
{
    if (!mask)
        return 0;
    int shift = 0;
    while (!((mask >> shift) & 1))
        ++shift;
    return int(((pixel & mask) >> shift) & 0xff);
}

} // namespace

QImage readXwd(const QByteArray& dump)
{
    if (dump.size() < FieldCount * 4)
        return QImage();
    quint32 header[FieldCount];
    for (int i = 0; i < FieldCount; ++i)
        header[i] = qFromBigEndian<quint32>(dump.constData() + 4 * i);
    const int bytesPerPixel = int(header[BitsPerPixel] / 8);
    if (header[FileVersion] != 7 || header[PixmapFormat] != zPixmap
        || header[VisualClass] != trueColour || (bytesPerPixel != 3 && bytesPerPixel != 4))
        return QImage();

    const int width = int(header[PixmapWidth]);
    const int height = int(header[PixmapHeight]);
    const qint64 stride = header[BytesPerLine];
    const qint64 start = qint64(header[HeaderSize]) + qint64(header[ColourCount]) * colourSize;
    if (width <= 0 || height <= 0 || start + stride * height > dump.size()
        || stride < qint64(width) * bytesPerPixel)
        return QImage();

    const bool mostSignificantFirst = header[ByteOrder] != 0;
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const uchar*>(dump.constData() + start + stride * y);
        auto* out = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const uchar* bytes = row + x * bytesPerPixel;
            quint32 pixel = 0;
            for (int b = 0; b < bytesPerPixel; ++b) {
                const int shift = mostSignificantFirst ? 8 * (bytesPerPixel - 1 - b) : 8 * b;
                pixel |= quint32(bytes[b]) << shift;
            }
            out[x] = qRgb(channel(pixel, header[RedMask]), channel(pixel, header[GreenMask]),
                channel(pixel, header[BlueMask]));
        }
    }
    return image;
}
