// SPDX-License-Identifier: MIT
#ifndef IMAGEFORMATSUPPORT_H
#define IMAGEFORMATSUPPORT_H

#include <QByteArray>
#include <QIODevice>
#include <QImage>
#include <QImageIOPlugin>

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
