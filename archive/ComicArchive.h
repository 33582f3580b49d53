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
    // The most memory that one entry's bytes may take. Only a crafted or broken
    // file comes near it; beyond it an entry reads as unreadable.
    static constexpr qint64 memoryLimit = qint64(256) << 20;
    // The most pixels decoded at full size: 4096 × 4096. A larger image is
    // decoded smaller by a decoder that can, and otherwise not at all, so that
    // no page costs more memory than a page of this size.
    static constexpr qint64 pixelBudget = qint64(4096) * 4096;

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
    // Whether the reader's decoder makes a smaller image while it decodes.
    // Qt's PNG reader, among others, claims the scaled-size option but decodes
    // the whole image first, which is what the budget has to prevent.
    static bool decodesReduced(QImageReader& reader);
    // Whether the image that reader is about to decode fits memoryLimit at the
    // size its decoder works at. True when the reader cannot tell the size.
    static bool fitsMemoryLimit(QImageReader& reader);
    // The bytes decoded within pixelBudget, with the lines a reader of the
    // log sees for a page over it.
    static QImage decode(const QByteArray& bytes);
};

#endif
