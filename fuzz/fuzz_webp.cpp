// SPDX-License-Identifier: MIT
// The WebP image plug-in over arbitrary bytes, read as the archives read an
// entry: QImageReader on a buffer with the format named. The plug-in is
// compiled in and imported statically. The first byte's low bit asks for a
// decode at a third of the claimed size; the rest is the file.

#include "FuzzSupport.h"

#include <QBuffer>
#include <QImageReader>
#include <QtPlugin>

Q_IMPORT_PLUGIN(WebpPlugin)

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzSupport::initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    QBuffer buffer;
    buffer.setData(reinterpret_cast<const char*>(data + 1), int(size - 1));
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "webp");
    const QSize claimed = reader.size();
    QSize expected = claimed;
    if ((data[0] & 1) && claimed.isValid()) {
        expected = QSize(qMax(1, claimed.width() / 3), qMax(1, claimed.height() / 3));
        reader.setScaledSize(expected);
    }
    const QImage image = reader.read();
    // A decoded image has the size that was claimed or asked for.
    if (!image.isNull() && image.size() != expected)
        __builtin_trap();
    return 0;
}
