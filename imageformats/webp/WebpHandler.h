// SPDX-License-Identifier: MIT
#ifndef WEBPHANDLER_H
#define WEBPHANDLER_H

#include <QByteArray>
#include <QImageIOHandler>
#include <QSize>

#include <webp/decode.h>

// Reads one WebP image: lossy, lossless, with or without alpha, or the first
// frame of an animation. The size and format come from the header without
// decoding; a scaled size is decoded at that size by libwebp itself. Written
// against the API that Qt 4.8 and Qt 5 share.
class WebpHandler : public QImageIOHandler
{
public:
    WebpHandler();

    bool canRead() const override;
    bool read(QImage* image) override;

    QVariant option(ImageOption option) const override;
    void setOption(ImageOption option, const QVariant& value) override;
    bool supportsOption(ImageOption option) const override;

    // Whether the device starts with a WebP's RIFF signature; reads nothing.
    static bool canRead(QIODevice* device);

private:
    // Reads the features from the start of the device, once.
    bool readHeader() const;
    QSize fullSize() const;
    QSize outputSize() const;
    // What decoding to outputSize() takes, in bytes.
    qint64 decodingBytes() const;
    bool readFirstFrame(const QByteArray& data, QImage* image) const;

    mutable bool headerRead;
    mutable bool headerValid;
    mutable WebPBitstreamFeatures features;
    QSize scaledSize;
};

#endif
