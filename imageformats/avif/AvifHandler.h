// SPDX-License-Identifier: MIT
#ifndef AVIFHANDLER_H
#define AVIFHANDLER_H

#include "ImageFormatSupport.h"

struct avifDecoder;

// Reads one AVIF image, or the first frame of an AVIF sequence, decoded by
// libavif with dav1d: 8-bit output of any bit depth, alpha kept, the
// container's rotation (irot) and mirror (imir) applied. The size comes from
// the container without decoding. AV1 cannot decode at a smaller size, so the
// handler offers no scaled size: an oversized page is refused rather than
// decoded whole. Colour profiles are ignored, as Qt 4 has no colour management.
class AvifHandler : public ImageFormatSupport::MemoryFileHandler
{
public:
    AvifHandler();
    ~AvifHandler() override;

    using MemoryFileHandler::canRead;
    bool read(QImage* image) override;

    // Whether the device starts with an ISO media file type box that names
    // an AVIF brand; reads nothing.
    static bool canRead(QIODevice* device);

private:
    bool parseHeader(const QByteArray& data) const override;
    // Rotated a quarter turn, the image swaps sides.
    QSize displaySize() const override;
    bool hasAlpha() const override;
    // What decoding takes, in bytes: dav1d's planes and the output.
    qint64 decodingBytes() const;

    mutable avifDecoder* decoder;
};

#endif
