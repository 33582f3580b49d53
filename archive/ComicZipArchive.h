// SPDX-License-Identifier: MIT
#ifndef COMICZIPARCHIVE_H
#define COMICZIPARCHIVE_H

#include "ComicArchive.h"

#include <QByteArray>

struct zip;

// A comic packed as ZIP (cbz, zave), opened once with libzip. Entry names are
// the archive's bytes as Latin-1, so that every name converts back exactly.
class ComicZipArchive : public ComicArchive
{
public:
    // "file://" is removed from the path before opening.
    explicit ComicZipArchive(const QString& path);
    ~ComicZipArchive() override;

    // Every entry, directories included, in the archive's own order.
    QStringList files() override;
    QImage data(const QString& name) override;

    // The entry's uncompressed bytes; empty when the name is unknown.
    QByteArray raw(const QString& name);

private:
    // Null when opening failed.
    struct zip* archive;
};

#endif
