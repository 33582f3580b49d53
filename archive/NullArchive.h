// SPDX-License-Identifier: MIT
#ifndef NULLARCHIVE_H
#define NULLARCHIVE_H

#include "ComicArchive.h"

// A plain image file as a book of one page: the file itself. Decoding is
// bounded, so that a huge picture cannot exhaust the device's memory.
class NullArchive : public ComicArchive
{
public:
    explicit NullArchive(const QString& path);
    ~NullArchive() override;

    // The path, exactly as given.
    QStringList files() override;
    // The image file named name, shrunk by the decoder when it holds more
    // than 4096 × 4096 pixels; null when that format cannot decode smaller.
    QImage data(const QString& name) override;

private:
    QString path;
};

#endif
