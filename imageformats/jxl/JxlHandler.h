// SPDX-License-Identifier: MIT
#ifndef JXLHANDLER_H
#define JXLHANDLER_H

#include "ImageFormatSupport.h"
#include "JxlBudgetRunner.h"

#include <jxl/codestream_header.h>

struct JxlDecoderStruct;

// Reads one JPEG XL image, bare codestream or container, or the first frame
// of an animation, decoded by libjxl: 8-bit output of any bit depth, alpha
// kept, the image's orientation applied by libjxl, lossy images in sRGB. The
// size comes from the header without decoding. libjxl decodes the whole image
// whatever it outputs, so the handler offers no scaled size: an oversized page
// is refused rather than decoded whole; so is one that libjxl would take more
// memory for than memoryLimit, from the header where it can tell and otherwise
// while decoding. Colour profiles are ignored, as Qt 4 has no colour
// management.
class JxlHandler : public ImageFormatSupport::MemoryFileHandler
{
public:
    JxlHandler();
    ~JxlHandler() override;

    using MemoryFileHandler::canRead;
    bool read(QImage* image) override;

    // Whether the device starts with a JPEG XL codestream's or container's
    // signature; reads nothing.
    static bool canRead(QIODevice* device);

private:
    // Decodes as far as the basic information.
    bool parseHeader(const QByteArray& data) const override;
    // After the image's orientation.
    QSize displaySize() const override;
    bool hasAlpha() const override;
    // The least that decoding takes, in bytes, as far as the header tells: the
    // file, libjxl's buffers and the output.
    qint64 decodingBytes() const;
    // Into image's words: as bytes from libjxl, to be put in Qt's order, or
    // as floats through a row callback.
    bool decode(QImage* image, bool bytes);

    mutable JxlDecoderStruct* decoder;
    mutable JxlBasicInfo info;
    mutable qint64 fileBytes;
    // Runs libjxl's work and stops it past memoryLimit.
    mutable JxlBudgetRunner runner;
};

#endif
