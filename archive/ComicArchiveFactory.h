// SPDX-License-Identifier: MIT
#ifndef COMICARCHIVEFACTORY_H
#define COMICARCHIVEFACTORY_H

#include <QString>

class ComicArchive;

// Picks the archive for a file by its suffix.
class ComicArchiveFactory
{
public:
    // A new archive owned by the caller, or null for a file that is neither a
    // comic nor a supported image. The file itself is not looked at.
    static ComicArchive* instance(const QString& path);

    ComicArchiveFactory() = delete;
};

#endif
