// SPDX-License-Identifier: MIT
#include "KeyedPng.h"

#include <QtEndian>

#include <png.h>

#include <csetjmp>
#include <cstring>
#include <vector>

namespace {

struct Input
{
    const QByteArray* bytes;
    int offset;
};

void readBytes(png_structp png, png_bytep data, png_size_t length)
{
    auto* input = static_cast<Input*>(png_get_io_ptr(png));
    if (qint64(input->offset) + qint64(length) > input->bytes->size())
        png_error(png, "truncated");
    std::memcpy(data, input->bytes->constData() + input->offset, length);
    input->offset += int(length);
}

// Quiet: a broken page is a null image, as from Qt's reader.
void ignoreWarning(png_structp, png_const_charp) { }

void fail(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

} // namespace

namespace KeyedPng {

bool isDeepColourWithKey(const QByteArray& bytes)
{
    if (!bytes.startsWith(QByteArray("\x89PNG\r\n\x1a\n", 8)) || bytes.size() < 33)
        return false;
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    // IHDR comes first: bit depth at 24, colour type at 25.
    if (std::memcmp(data + 12, "IHDR", 4) != 0 || data[24] != 16 || data[25] != 2)
        return false;
    for (qint64 at = 8; at + 8 <= bytes.size();) {
        const quint32 length = qFromBigEndian<quint32>(data + at);
        const char* type = bytes.constData() + at + 4;
        if (std::memcmp(type, "tRNS", 4) == 0)
            return true;
        if (std::memcmp(type, "IDAT", 4) == 0)
            return false;
        at += 12 + qint64(length);
    }
    return false;
}

QImage read(const QByteArray& bytes)
{
    Input input { &bytes, 0 };
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignoreWarning);
    if (!png)
        return QImage();
    png_infop info = png_create_info_struct(png);
    QImage image;
    std::vector<png_bytep> rows;
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, info ? &info : nullptr, nullptr);
        return QImage();
    }
    png_set_read_fn(png, &input, readBytes);
    png_read_info(png, info);
    png_set_strip_16(png);
    png_set_tRNS_to_alpha(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    if (png_get_channels(png, info) != 4 || png_get_bit_depth(png, info) != 8)
        png_error(png, "unexpected layout");

    image = QImage(int(width), int(height), QImage::Format_RGBA8888);
    if (image.isNull())
        png_error(png, "out of memory");
    rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y)
        rows[y] = image.scanLine(int(y));
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return image;
}

} // namespace KeyedPng
