// SPDX-License-Identifier: MIT
#ifndef IMAGEFORMATSUPPORT_H
#define IMAGEFORMATSUPPORT_H

#include <QByteArray>
#include <QIODevice>
#include <QImage>
#include <QImageIOPlugin>
#include <QSize>
#include <QVariant>

// What the page-format plug-ins share: the memory limit of one decode, reading
// a file within it, and how a plug-in answers Qt's loader. Written against the
// API that Qt 4.8 and Qt 5 share.
namespace ImageFormatSupport {

// The most memory that decoding one image may take, output and the decoder's
// own buffers together: the comic archives' memory limit. A header may claim
// tens of thousands of pixels a side in a few bytes.
constexpr qint64 memoryLimit = qint64(256) << 20;

// The bytes from the device's position to its end; empty where they would
// pass memoryLimit.
inline QByteArray readBounded(QIODevice* device)
{
    if (!device->isSequential() && device->size() - device->pos() > memoryLimit)
        return QByteArray();
    const QByteArray data = device->readAll();
    return data.size() > memoryLimit ? QByteArray() : data;
}

// QImage's 32-bit formats hold a pixel as one native 0xAARRGGBB word.
inline QImage::Format formatFor(bool alpha)
{
    return alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
}

// The handler of a format whose decoder reads from memory: the file is read
// once, whole and within memoryLimit, and its header parsed from it; the size
// and the image format are answered from the header. Each format says how its
// files begin, parses the header and reads the image.
class MemoryFileHandler : public QImageIOHandler
{
public:
    using Signature = bool (*)(QIODevice*);

    MemoryFileHandler(const char* key, Signature matches)
        : key(key)
        , matches(matches)
    {
    }

    bool canRead() const override
    {
        if (!matches(device()))
            return false;
        setFormat(key);
        return true;
    }

    QVariant option(ImageOption option) const override
    {
        if (option == Size)
            return readHeader() ? displaySize() : QSize();
        if (option == ImageFormat && readHeader())
            return int(formatFor(hasAlpha()));
        return QVariant();
    }

    bool supportsOption(ImageOption option) const override
    {
        return option == Size || option == ImageFormat;
    }

protected:
    // Reads the file and parses its header, once.
    bool readHeader() const
    {
        if (!headerRead) {
            headerRead = true;
            data = matches(device()) ? readBounded(device()) : QByteArray();
            headerValid = !data.isEmpty() && parseHeader(data);
        }
        return headerValid;
    }

    // The header, from the file's bytes, which stay as they are while the
    // handler lives: decoders may keep pointing into them.
    virtual bool parseHeader(const QByteArray& data) const = 0;
    // After a header was parsed: the image's size as shown, and whether it
    // has alpha.
    virtual QSize displaySize() const = 0;
    virtual bool hasAlpha() const = 0;

private:
    const char* const key;
    const Signature matches;
    mutable bool headerRead = false;
    mutable bool headerValid = false;
    mutable QByteArray data;
};

// Qt's question to a plug-in. The bytes decide where they can be seen without
// consuming them, so that a PNG named like one of ours goes on to Qt's other
// readers: Qt 5 would check with the handler's canRead(), Qt 4 would not.
template<class Handler>
QImageIOPlugin::Capabilities capabilities(
    QIODevice* device, const QByteArray& format, const QByteArray& key)
{
    if (!format.isEmpty() && format != key)
        return QImageIOPlugin::Capabilities();
    if (device && device->isOpen() && !device->isSequential())
        return Handler::canRead(device) ? QImageIOPlugin::CanRead : QImageIOPlugin::Capabilities();
    return format.isEmpty() ? QImageIOPlugin::Capabilities() : QImageIOPlugin::CanRead;
}

template<class Handler> QImageIOHandler* create(QIODevice* device, const QByteArray& format)
{
    QImageIOHandler* handler = new Handler;
    handler->setDevice(device);
    handler->setFormat(format);
    return handler;
}

} // namespace ImageFormatSupport

#endif
