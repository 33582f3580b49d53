// SPDX-License-Identifier: MIT
#include "WebpHandler.h"

#include "ImageFormatSupport.h"

#include <QIODevice>
#include <QImage>
#include <QVariant>

#include <webp/demux.h>

#include <cstring>

using ImageFormatSupport::memoryLimit;

namespace {

// QImage's 32-bit formats hold a pixel as one native 0xAARRGGBB word.
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
const WEBP_CSP_MODE argbMode = MODE_BGRA;
#else
const WEBP_CSP_MODE argbMode = MODE_ARGB;
#endif

// WebPBitstreamFeatures::format of a lossless image.
const int losslessFormat = 2;

bool fitsInt(qint64 value)
{
    return value >= 0 && value <= 0x7fffffff;
}

} // namespace

WebpHandler::WebpHandler()
    : headerRead(false)
    , headerValid(false)
{
    std::memset(&features, 0, sizeof features);
}

bool WebpHandler::canRead() const
{
    if (!canRead(device()))
        return false;
    setFormat("webp");
    return true;
}

bool WebpHandler::canRead(QIODevice* device)
{
    if (!device)
        return false;
    const QByteArray head = device->peek(12);
    return head.size() == 12 && std::memcmp(head.constData(), "RIFF", 4) == 0
        && std::memcmp(head.constData() + 8, "WEBP", 4) == 0;
}

bool WebpHandler::readHeader() const
{
    if (headerRead)
        return headerValid;
    headerRead = true;
    QIODevice* source = device();
    if (!canRead(source))
        return false;

    // A plain image tells its features in its first 30 bytes or so; chunks
    // before the image data (an ICC profile, say) push them further on.
    const qint64 available
        = source->isSequential() ? source->bytesAvailable() : source->size() - source->pos();
    const qint64 whole = qMin(available, memoryLimit);
    qint64 amount = 64;
    for (;;) {
        const QByteArray head = source->peek(qMin(amount, whole));
        const VP8StatusCode status = WebPGetFeatures(
            reinterpret_cast<const uint8_t*>(head.constData()), size_t(head.size()), &features);
        if (status == VP8_STATUS_OK) {
            headerValid = features.width > 0 && features.height > 0;
            return headerValid;
        }
        if (status != VP8_STATUS_NOT_ENOUGH_DATA || amount >= whole)
            return false;
        amount = amount < 65536 ? 65536 : whole;
    }
}

QSize WebpHandler::fullSize() const
{
    return readHeader() ? QSize(features.width, features.height) : QSize();
}

QSize WebpHandler::outputSize() const
{
    const QSize full = fullSize();
    return scaledSize.isValid() && !scaledSize.isEmpty() ? scaledSize : full;
}

qint64 WebpHandler::decodingBytes() const
{
    const QSize output = outputSize();
    const qint64 full = qint64(features.width) * features.height;
    qint64 bytes = qint64(output.width()) * output.height() * 4;
    if (features.has_animation)
        // The animation decoder keeps two canvases, and the frame is scaled
        // from a copy of one.
        bytes += full * 4 * 3;
    else if (features.format == losslessFormat)
        // Lossless decoding keeps the whole image whatever the output size.
        bytes += full * 4;
    else if (features.has_alpha)
        // The alpha plane is decoded whole, a byte a pixel.
        bytes += full;
    return bytes;
}

bool WebpHandler::read(QImage* image)
{
    if (!readHeader())
        return false;
    const QSize output = outputSize();
    if (output.isEmpty() || decodingBytes() > memoryLimit)
        return false;

    const QByteArray data = ImageFormatSupport::readBounded(device());
    if (data.isEmpty())
        return false;

    if (features.has_animation)
        return readFirstFrame(data, image);

    QImage decoded(output, ImageFormatSupport::formatFor(features.has_alpha));
    if (decoded.isNull())
        return false;
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config))
        return false;
    if (output != fullSize()) {
        config.options.use_scaling = 1;
        config.options.scaled_width = output.width();
        config.options.scaled_height = output.height();
    }
    // Straight into the image's pixels; an opaque image gets 0xff alpha bytes,
    // as QImage::Format_RGB32 wants.
    config.output.colorspace = argbMode;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = decoded.bits();
    config.output.u.RGBA.stride = decoded.bytesPerLine();
    config.output.u.RGBA.size = size_t(decoded.bytesPerLine()) * size_t(decoded.height());
    const VP8StatusCode status = WebPDecode(
        reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size()), &config);
    WebPFreeDecBuffer(&config.output);
    if (status != VP8_STATUS_OK)
        return false;
    *image = decoded;
    return true;
}

bool WebpHandler::readFirstFrame(const QByteArray& data, QImage* image) const
{
    WebPAnimDecoderOptions options;
    if (!WebPAnimDecoderOptionsInit(&options))
        return false;
    options.color_mode = argbMode;
    options.use_threads = 0;
    WebPData bytes;
    bytes.bytes = reinterpret_cast<const uint8_t*>(data.constData());
    bytes.size = size_t(data.size());
    WebPAnimDecoder* decoder = WebPAnimDecoderNew(&bytes, &options);
    if (!decoder)
        return false;

    WebPAnimInfo info;
    uint8_t* canvas = nullptr;
    int timestamp = 0;
    QImage frame;
    if (WebPAnimDecoderGetInfo(decoder, &info)
        && WebPAnimDecoderGetNext(decoder, &canvas, &timestamp)
        && fitsInt(qint64(info.canvas_width) * 4)) {
        // The canvas is transparent where the first frame does not cover it.
        frame = QImage(canvas, int(info.canvas_width), int(info.canvas_height),
            int(info.canvas_width) * 4, QImage::Format_ARGB32)
                    .copy();
    }
    WebPAnimDecoderDelete(decoder);
    if (frame.isNull())
        return false;

    // libwebp cannot scale an animation's canvas, so Qt does; its smooth
    // scale works premultiplied.
    const QSize output = outputSize();
    if (frame.size() != output)
        frame = frame.scaled(output, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                    .convertToFormat(QImage::Format_ARGB32);
    *image = frame;
    return !image->isNull();
}

QVariant WebpHandler::option(ImageOption option) const
{
    switch (option) {
    case Size:
        return fullSize();
    case ScaledSize:
        return scaledSize;
    case ImageFormat:
        if (!readHeader())
            return QVariant();
        return int(ImageFormatSupport::formatFor(features.has_alpha || features.has_animation));
    default:
        return QVariant();
    }
}

void WebpHandler::setOption(ImageOption option, const QVariant& value)
{
    if (option == ScaledSize)
        scaledSize = value.toSize();
}

bool WebpHandler::supportsOption(ImageOption option) const
{
    return option == Size || option == ScaledSize || option == ImageFormat;
}
