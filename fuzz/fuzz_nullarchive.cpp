// SPDX-License-Identifier: MIT
// The single-image archive over arbitrary image bytes. The first byte picks
// the file's suffix among the formats Qt reads, as the suffix steers the
// decoder; the rest is the file.

#include "FuzzSupport.h"
#include "NullArchive.h"

#include <QImageReader>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzSupport::initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    if (size < 1 || formats.isEmpty())
        return 0;
    const QString suffix = QString::fromLatin1(formats.at(data[0] % formats.size()));
    const QString path = FuzzSupport::scratchFile(suffix);
    if (!FuzzSupport::write(path, data + 1, size - 1))
        return 0;

    NullArchive archive(path);
    const QStringList names = archive.files();
    if (names != QStringList(path))
        __builtin_trap();
    // Deliberately unbounded: a size whose pixel count wraps within the budget.
    const QSize claimed = QImageReader(path).size();
    if (claimed.isValid() && qint32(quint32(claimed.width()) * quint32(claimed.height())) < 0)
        return 0;
    const QImage image = archive.data(path);
    // A size the reader reports over the pixel budget decodes within it; what
    // decodes is bounded by the memory limit in every case (a GIF reports its
    // first frame and decodes to its whole canvas).
    const qint64 budget = qint64(4096) * 4096;
    const bool claimedOver = claimed.isValid() && qint64(claimed.width()) * claimed.height() > budget;
    if (claimedOver && qint64(image.width()) * image.height() > budget)
        __builtin_trap();
    if (image.sizeInBytes() > ComicArchive::memoryLimit)
        __builtin_trap();
    return 0;
}
