// SPDX-License-Identifier: MIT
// A page-format plug-in over arbitrary bytes, read as the archives read an
// entry: QImageReader on a buffer with the format named. FUZZ_FORMAT names the
// format and FUZZ_PLUGIN the plug-in's class, compiled in and imported
// statically. The first byte's low bit asks for a decode at a third of the
// claimed size (by the plug-in where it can, else by Qt); the rest is the file.

#include "FuzzSupport.h"

#include <QBuffer>
#include <QImageReader>
#include <QtPlugin>

// Through a macro of our own, so that FUZZ_PLUGIN is expanded before Qt's pastes it.
#define IMPORT_PLUGIN(name) Q_IMPORT_PLUGIN(name)
IMPORT_PLUGIN(FUZZ_PLUGIN)

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
    QImageReader reader(&buffer, FUZZ_FORMAT);
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
