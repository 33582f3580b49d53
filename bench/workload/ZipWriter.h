// SPDX-License-Identifier: MIT
#ifndef ZIPWRITER_H
#define ZIPWRITER_H

#include <QByteArray>
#include <QList>
#include <QString>

struct zip;

// Writes a ZIP file with libzip's defaults (deflated entries), as archivers
// make comics. Entries are written when the writer is closed.
class ZipWriter
{
public:
    explicit ZipWriter(const QString& path);
    ~ZipWriter();

    // A name ending in "/" adds a folder entry.
    bool add(const QByteArray& name, const QByteArray& bytes = QByteArray());
    // An entry whose bytes libzip reads from a file when the archive closes,
    // so that an archive larger than memory can be written.
    bool addFile(const QByteArray& name, const QString& path);
    bool close();

    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

private:
    struct zip* archive;
    // libzip reads the buffers only when the archive is closed.
    QList<QByteArray> contents;
};

#endif
