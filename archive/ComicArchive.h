// SPDX-License-Identifier: MIT
#ifndef COMICARCHIVE_H
#define COMICARCHIVE_H

#include <QImage>
#include <QString>
#include <QStringList>

class QImageReader;

// A comic's container: a list of named entries, each of which decodes to an
// image. Failures are results: an empty list, a null image.
class ComicArchive
{
public:
    // The most memory that one entry may take, read or decoded. Only a crafted
    // or broken file comes near it; beyond it an entry reads as unreadable and
    // decodes as a null image, so that no file can exhaust the device's memory.
    static constexpr qint64 memoryLimit = qint64(256) << 20;

    // Implementations pass their path; nothing of it is kept here.
    explicit ComicArchive(const QString& path);
    virtual ~ComicArchive();

    // Every entry name, done afresh on each call.
    virtual QStringList files() = 0;
    // The named entry decoded; null on failure.
    virtual QImage data(const QString& name) = 0;

    ComicArchive(const ComicArchive&) = delete;
    ComicArchive& operator=(const ComicArchive&) = delete;

protected:
    // The size the reader's image decodes to, without decoding it: its size(),
    // corrected where Qt's decoder reports less than it makes.
    static QSize imageSize(QImageReader& reader);
    // Whether the image that reader is about to decode fits memoryLimit at the
    // size its decoder works at. True when the reader cannot tell the size.
    static bool fitsMemoryLimit(QImageReader& reader);
    // The bytes decoded as QImage::loadFromData does, within memoryLimit.
    static QImage decode(const QByteArray& bytes);
};

#endif
