#ifndef COMICARCHIVE_H
#define COMICARCHIVE_H

#include <QImage>
#include <QString>
#include <QStringList>

// A comic's container: a list of named entries, each of which decodes to an
// image. Failures are results: an empty list, a null image.
class ComicArchive
{
public:
    // Implementations pass their path; nothing of it is kept here.
    explicit ComicArchive(const QString& path);
    virtual ~ComicArchive();

    // Every entry name, done afresh on each call.
    virtual QStringList files() = 0;
    // The named entry decoded; null on failure.
    virtual QImage data(const QString& name) = 0;

    ComicArchive(const ComicArchive&) = delete;
    ComicArchive& operator=(const ComicArchive&) = delete;
};

#endif
