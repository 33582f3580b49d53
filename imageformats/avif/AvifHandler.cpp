// SPDX-License-Identifier: MIT
#include "AvifHandler.h"

#include <QIODevice>
#include <QImage>
#include <QTransform>
#include <QtEndian>

#include <avif/avif.h>

#include <cstring>

using ImageFormatSupport::memoryLimit;

namespace {

#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
const avifRGBFormat argbFormat = AVIF_RGB_FORMAT_BGRA;
#else
const avifRGBFormat argbFormat = AVIF_RGB_FORMAT_ARGB;
#endif

// The quarter turns, anticlockwise, that the container asks for.
int quarterTurns(const avifImage* image)
{
    return image->transformFlags & AVIF_TRANSFORM_IROT ? image->irot.angle & 3 : 0;
}

bool mirrored(const avifImage* image)
{
    return image->transformFlags & AVIF_TRANSFORM_IMIR;
}

} // namespace

AvifHandler::AvifHandler()
    : MemoryFileHandler("avif", &AvifHandler::canRead)
    , decoder(nullptr)
{
}

AvifHandler::~AvifHandler()
{
    if (decoder)
        avifDecoderDestroy(decoder);
}

bool AvifHandler::canRead(QIODevice* device)
{
    if (!device)
        return false;
    // The file type box comes first: its size, "ftyp", the major brand, a
    // version, then the compatible brands.
    const QByteArray head = device->peek(64);
    if (head.size() < 16 || std::memcmp(head.constData() + 4, "ftyp", 4) != 0)
        return false;
    const quint32 boxSize
        = qFromBigEndian<quint32>(reinterpret_cast<const uchar*>(head.constData()));
    const int end = int(qMin<quint32>(boxSize, quint32(head.size())));
    for (int brand = 8; brand + 4 <= end; brand += brand == 8 ? 8 : 4) {
        if (std::memcmp(head.constData() + brand, "avif", 4) == 0
            || std::memcmp(head.constData() + brand, "avis", 4) == 0)
            return true;
    }
    return false;
}

bool AvifHandler::parseHeader(const QByteArray& data) const
{
    decoder = avifDecoderCreate();
    if (!decoder)
        return false;
    decoder->maxThreads = 1;
    decoder->ignoreExif = AVIF_TRUE;
    decoder->ignoreXMP = AVIF_TRUE;
    // Files from many converters lack boxes that strict readers insist on.
    decoder->strictFlags = AVIF_STRICT_DISABLED;
    return avifDecoderSetIOMemory(
               decoder, reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size()))
        == AVIF_RESULT_OK
        && avifDecoderParse(decoder) == AVIF_RESULT_OK && decoder->image->width > 0
        && decoder->image->height > 0;
}

QSize AvifHandler::displaySize() const
{
    const QSize size(int(decoder->image->width), int(decoder->image->height));
    return quarterTurns(decoder->image) % 2 ? QSize(size.height(), size.width()) : size;
}

bool AvifHandler::hasAlpha() const
{
    return decoder->alphaPresent;
}

qint64 AvifHandler::decodingBytes() const
{
    const avifImage* image = decoder->image;
    const qint64 pixels = qint64(image->width) * image->height;
    const qint64 sample = image->depth > 8 ? 2 : 1;
    // Chroma planes in quarters of the luma plane.
    qint64 chroma = 0;
    switch (image->yuvFormat) {
    case AVIF_PIXEL_FORMAT_YUV444:
        chroma = 8;
        break;
    case AVIF_PIXEL_FORMAT_YUV422:
        chroma = 4;
        break;
    case AVIF_PIXEL_FORMAT_YUV420:
        chroma = 2;
        break;
    default:
        break;
    }
    const qint64 planes = pixels * sample * (4 + chroma + (decoder->alphaPresent ? 4 : 0)) / 4;
    // dav1d's frame, padded, with its working buffers (measured: 1.1 to 1.4
    // times the planes), then the output, and a turned or mirrored copy of that.
    const bool transformed = quarterTurns(image) || mirrored(image);
    return planes * 2 + pixels * 4 * (transformed ? 2 : 1);
}

bool AvifHandler::read(QImage* image)
{
    if (!readHeader() || decodingBytes() > memoryLimit)
        return false;
    // dav1d refuses a frame larger than the container declared, so that a
    // stream that lies about its size cannot pass the check above.
    decoder->imageSizeLimit = decoder->image->width * decoder->image->height;
    if (avifDecoderReset(decoder) != AVIF_RESULT_OK
        || avifDecoderNextImage(decoder) != AVIF_RESULT_OK)
        return false;

    const avifImage* decoded = decoder->image;
    QImage frame(
        int(decoded->width), int(decoded->height), ImageFormatSupport::formatFor(hasAlpha()));
    if (frame.isNull())
        return false;
    avifRGBImage rgb;
    avifRGBImageSetDefaults(&rgb, decoded);
    // Straight into the image's pixels, 8 bits a channel whatever the depth;
    // an opaque image gets 0xff alpha bytes, as QImage::Format_RGB32 wants.
    rgb.depth = 8;
    rgb.format = argbFormat;
    rgb.pixels = frame.bits();
    rgb.rowBytes = uint32_t(frame.bytesPerLine());
    if (avifImageYUVToRGB(decoded, &rgb) != AVIF_RESULT_OK)
        return false;

    // The container turns first, then mirrors.
    if (const int turns = quarterTurns(decoded))
        frame = frame.transformed(QTransform().rotate(-90.0 * turns));
    if (mirrored(decoded)) {
        const bool leftRight = decoded->imir.mode == 1;
        frame = frame.mirrored(leftRight, !leftRight);
    }
    *image = frame;
    return !image->isNull();
}
