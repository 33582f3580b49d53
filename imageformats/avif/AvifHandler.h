// SPDX-License-Identifier: MIT
#ifndef AVIFHANDLER_H
#define AVIFHANDLER_H

#include <QByteArray>
#include <QImageIOHandler>
#include <QSize>

struct avifDecoder;

// Reads one AVIF image, or the first frame of an AVIF sequence, decoded by
// libavif with dav1d: 8-bit output of any bit depth, alpha kept, the
// container's rotation (irot) and mirror (imir) applied. The size comes from
// the container without decoding. AV1 cannot decode at a smaller size, so the
// handler offers no scaled size: an oversized page is refused rather than
// decoded whole. Colour profiles are ignored, as Qt 4 has no colour management.
class AvifHandler : public QImageIOHandler
{
public:
    AvifHandler();
    ~AvifHandler() override;

    bool canRead() const override;
    bool read(QImage* image) override;

    QVariant option(ImageOption option) const override;
    bool supportsOption(ImageOption option) const override;

    // Whether the device starts with an ISO media file type box that names
    // an AVIF brand; reads nothing.
    static bool canRead(QIODevice* device);

private:
    // Reads the file and parses its container, once.
    bool readHeader() const;
    // The size of the image as shown: rotated a quarter turn, it swaps sides.
    QSize displaySize() const;
    // What decoding takes, in bytes: dav1d's planes and the output.
    qint64 decodingBytes() const;

    mutable bool headerRead;
    mutable bool headerValid;
    mutable QByteArray data;
    mutable avifDecoder* decoder;
};

#endif
