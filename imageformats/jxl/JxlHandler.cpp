// SPDX-License-Identifier: MIT
#include "JxlHandler.h"

#include <QIODevice>
#include <QImage>

#include <jxl/decode.h>

#include <cmath>
#include <cstring>

#if defined(__arm__)
#include <sys/auxv.h>
#endif

using ImageFormatSupport::memoryLimit;

namespace {

const JxlPixelFormat rgba8 = { 4, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0 };

// libjxl writes R, G, B, A bytes; QImage's 32-bit formats hold one native
// 0xAARRGGBB word a pixel. On a little-endian processor the bytes read as
// 0xAABBGGRR, which a byte swap and a turn by 8 bits make 0xAARRGGBB: two
// instructions a pixel on ARM, where this pass is a tenth of a page's decode.
void toArgb(QImage* image)
{
    for (int y = 0; y < image->height(); ++y) {
        uchar* line = image->scanLine(y);
        const int width = image->width();
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
        for (int x = 0; x < width; ++x) {
            quint32 word;
            std::memcpy(&word, line + 4 * x, 4);
            word = __builtin_bswap32(word);
            word = (word >> 8) | (word << 24);
            std::memcpy(line + 4 * x, &word, 4);
        }
#else
        for (uchar* pixel = line; pixel < line + 4 * width; pixel += 4) {
            const QRgb argb = qRgba(pixel[0], pixel[1], pixel[2], pixel[3]);
            std::memcpy(pixel, &argb, 4);
        }
#endif
    }
}

// Whether libjxl runs its vector code here. On ARMv7 highway takes its NEON
// code only where the core has NEON and VFPv4; elsewhere (Cortex-A8, A9) its
// scalar float-to-byte pass costs some 190 instructions a pixel and its sRGB
// curve 120, together a fifth of a page's decode, so there the handler takes
// floats, in linear light for a lossy image, and makes the bytes itself.
bool vectorDecoder()
{
#if defined(__arm__)
    static const bool vector = [] {
        const unsigned long caps = getauxval(AT_HWCAP);
        return (caps & HWCAP_ARM_NEON) && (caps & HWCAP_ARM_VFPv4);
    }();
    return vector;
#else
    return true;
#endif
}

const JxlPixelFormat rgbaFloat = { 4, JXL_TYPE_FLOAT, JXL_NATIVE_ENDIAN, 0 };

// Linear light to sRGB bytes, in steps so fine that one moves the darkest
// codes, where the curve is steepest, by a fifth of a code.
const int linearSteps = 16383;

const uchar* srgbFromLinear()
{
    static uchar table[linearSteps + 1];
    static const bool made = [] {
        for (int i = 0; i <= linearSteps; ++i) {
            const double linear = double(i) / linearSteps;
            const double encoded
                = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
            table[i] = uchar(std::lround(255 * encoded));
        }
        return true;
    }();
    Q_UNUSED(made);
    return table;
}

// A NaN, which a damaged file may give, is 0.
inline int byteOf(float value)
{
    return value > 0.f ? (value < 1.f ? int(value * 255.f + 0.5f) : 255) : 0;
}

inline int byteOfLinear(float value, const uchar* table)
{
    return table[value > 0.f ? (value < 1.f ? int(value * linearSteps + 0.5f) : linearSteps) : 0];
}

// Where libjxl hands over a row's float RGBA: into the image's ARGB words.
struct FloatRows
{
    QImage* image;
    const uchar* table; // null: the values are already sRGB
    bool alpha;
};

void writeFloatRow(void* opaque, size_t x, size_t y, size_t count, const void* pixels)
{
    const FloatRows* rows = static_cast<const FloatRows*>(opaque);
    const float* in = static_cast<const float*>(pixels);
    QRgb* out = reinterpret_cast<QRgb*>(rows->image->scanLine(int(y))) + x;
    if (rows->table) {
        // An opaque image's alpha is all ones.
        for (size_t i = 0; i < count; ++i, in += 4)
            out[i] = qRgba(byteOfLinear(in[0], rows->table), byteOfLinear(in[1], rows->table),
                byteOfLinear(in[2], rows->table), rows->alpha ? byteOf(in[3]) : 255);
    } else {
        for (size_t i = 0; i < count; ++i, in += 4)
            out[i] = qRgba(byteOf(in[0]), byteOf(in[1]), byteOf(in[2]), byteOf(in[3]));
    }
}

} // namespace

JxlHandler::JxlHandler()
    : MemoryFileHandler("jxl", &JxlHandler::canRead)
    , decoder(nullptr)
    , fileBytes(0)
{
    std::memset(&info, 0, sizeof info);
}

JxlHandler::~JxlHandler()
{
    if (decoder)
        JxlDecoderDestroy(decoder);
}

bool JxlHandler::canRead(QIODevice* device)
{
    if (!device)
        return false;
    const QByteArray head = device->peek(12);
    const JxlSignature signature = JxlSignatureCheck(
        reinterpret_cast<const uint8_t*>(head.constData()), size_t(head.size()));
    return signature == JXL_SIG_CODESTREAM || signature == JXL_SIG_CONTAINER;
}

bool JxlHandler::parseHeader(const QByteArray& data) const
{
    fileBytes = data.size();
    decoder = JxlDecoderCreate(nullptr);
    if (!decoder
        || JxlDecoderSetParallelRunner(decoder, &JxlBudgetRunner::run, &runner) != JXL_DEC_SUCCESS)
        return false;
    // The events of the whole decode, subscribed before the first: read()
    // goes on from the basic information.
    if (JxlDecoderSubscribeEvents(
            decoder, JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE)
            != JXL_DEC_SUCCESS
        || JxlDecoderSetInput(
               decoder, reinterpret_cast<const uint8_t*>(data.constData()), size_t(data.size()))
            != JXL_DEC_SUCCESS)
        return false;
    JxlDecoderSetUnpremultiplyAlpha(decoder, JXL_TRUE);
    JxlDecoderCloseInput(decoder);
    return JxlDecoderProcessInput(decoder) == JXL_DEC_BASIC_INFO
        && JxlDecoderGetBasicInfo(decoder, &info) == JXL_DEC_SUCCESS && info.xsize > 0
        && info.ysize > 0 && info.xsize <= 0x7fffffff && info.ysize <= 0x7fffffff;
}

QSize JxlHandler::displaySize() const
{
    const QSize size(int(info.xsize), int(info.ysize));
    // Orientations 5 to 8 turn the image a quarter.
    return info.orientation > JXL_ORIENT_ROTATE_180 ? QSize(size.height(), size.width()) : size;
}

bool JxlHandler::hasAlpha() const
{
    return info.alpha_bits > 0;
}

qint64 JxlHandler::decodingBytes() const
{
    // Sides of up to 2^30 each: past the limit in pixels alone, before the
    // product below could overflow.
    const qint64 pixels = qint64(info.xsize) * info.ysize;
    if (pixels > memoryLimit)
        return pixels;
    // The peak resident size of decoding with libjxl 0.7 as read() does,
    // beyond the file and the output's 4 bytes a pixel, measured with GNU
    // time on 4000 x 4000 pages and 3000 x 4500 ones with alpha, in bytes a
    // pixel:
    //   lossless, effort 1 or 7, with or without alpha       0.2 to 0.3
    //   lossless with a palette (few colours, effort 3 up)    12.5
    //   progressive lossless (squeezed)                       27
    //   a JPEG recompressed without loss                      0.6
    //   lossy (VarDCT), progressive or not                    2.9
    //   lossy (VarDCT) with alpha                             33
    //   lossy modular                                         26
    // and some 22 MiB whatever the size. libjxl writes a lossless or VarDCT
    // image into the output group by group; a palette, squeezing, alpha with
    // VarDCT and lossy modular coding make it keep whole planes. The header
    // tells lossy (XYB) from the rest and whether there is alpha, not how the
    // frame is coded: the estimate is the cheapest kind that the header
    // allows, so that no page that fits is refused unread, and the runner
    // stops a dearer one at the limit.
    const qint64 fixed = qint64(24) << 20;
    const qint64 perPixel = info.uses_original_profile ? 1 : info.alpha_bits > 0 ? 33 : 3;
    return fileBytes + fixed + pixels * (4 + perPixel);
}

bool JxlHandler::read(QImage* image)
{
    if (!readHeader() || decodingBytes() > memoryLimit)
        return false;
    // From before the output, which the limit covers as libjxl writes it.
    runner.start(memoryLimit - fileBytes);
    QImage frame(displaySize(), ImageFormatSupport::formatFor(hasAlpha()));
    const bool bytes = vectorDecoder();
    if (frame.isNull() || !decode(&frame, bytes))
        return false;
    if (bytes)
        toArgb(&frame);
    *image = frame;
    return true;
}

bool JxlHandler::decode(QImage* image, bool bytes)
{
    JxlPixelFormat format = rgba8;
    format.align = size_t(image->bytesPerLine());
    // A lossy image comes in linear light where the handler makes the bytes.
    const bool linear = !bytes && !info.uses_original_profile;
    FloatRows rows = { image, linear ? srgbFromLinear() : nullptr, hasAlpha() };
    for (;;) {
        switch (JxlDecoderProcessInput(decoder)) {
        case JXL_DEC_COLOR_ENCODING:
            // A lossy image's pixels are converted to what we ask; a lossless
            // one comes in its own colours.
            if (!info.uses_original_profile) {
                JxlColorEncoding srgb;
                std::memset(&srgb, 0, sizeof srgb);
                srgb.color_space
                    = info.num_color_channels == 1 ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
                srgb.white_point = JXL_WHITE_POINT_D65;
                srgb.primaries = JXL_PRIMARIES_SRGB;
                srgb.transfer_function
                    = linear ? JXL_TRANSFER_FUNCTION_LINEAR : JXL_TRANSFER_FUNCTION_SRGB;
                srgb.rendering_intent = JXL_RENDERING_INTENT_PERCEPTUAL;
                JxlDecoderSetPreferredColorProfile(decoder, &srgb);
            }
            break;
        case JXL_DEC_NEED_IMAGE_OUT_BUFFER: {
            if (!bytes) {
                if (JxlDecoderSetImageOutCallback(decoder, &rgbaFloat, &writeFloatRow, &rows)
                    != JXL_DEC_SUCCESS)
                    return false;
                break;
            }
            size_t needed = 0;
            const size_t have = size_t(image->bytesPerLine()) * size_t(image->height());
            if (JxlDecoderImageOutBufferSize(decoder, &format, &needed) != JXL_DEC_SUCCESS
                || needed > have
                || JxlDecoderSetImageOutBuffer(decoder, &format, image->bits(), have)
                    != JXL_DEC_SUCCESS)
                return false;
            break;
        }
        case JXL_DEC_FULL_IMAGE:
            // The first frame, whole: an animation's others are not read.
            return true;
        default:
            // An error, or a file that ends early.
            return false;
        }
    }
}
