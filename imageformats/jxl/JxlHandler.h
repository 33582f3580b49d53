// SPDX-License-Identifier: MIT
#ifndef JXLHANDLER_H
#define JXLHANDLER_H

#include <QByteArray>
#include <QImageIOHandler>
#include <QSize>

#include <jxl/codestream_header.h>

struct JxlDecoderStruct;

// Reads one JPEG XL image, bare codestream or container, or the first frame
// of an animation, decoded by libjxl: 8-bit output of any bit depth, alpha
// kept, the image's orientation applied by libjxl, lossy images in sRGB. The
// size comes from the header without decoding. libjxl holds the whole image
// whatever it outputs, so the handler offers no scaled size: an oversized page
// is refused rather than decoded whole. Colour profiles are ignored, as Qt 4
// has no colour management.
class JxlHandler : public QImageIOHandler
{
public:
    JxlHandler();
    ~JxlHandler() override;

    bool canRead() const override;
    bool read(QImage* image) override;

    QVariant option(ImageOption option) const override;
    bool supportsOption(ImageOption option) const override;

    // Whether the device starts with a JPEG XL codestream's or container's
    // signature; reads nothing.
    static bool canRead(QIODevice* device);

private:
    // Reads the file and decodes its basic information, once.
    bool readHeader() const;
    // The size of the image as shown, after its orientation.
    QSize displaySize() const;
    // What decoding takes, in bytes: libjxl's planes and the output.
    qint64 decodingBytes() const;
    bool decode(QImage* image);

    mutable bool headerRead;
    mutable bool headerValid;
    mutable QByteArray data;
    mutable JxlDecoderStruct* decoder;
    mutable JxlBasicInfo info;
};

#endif
