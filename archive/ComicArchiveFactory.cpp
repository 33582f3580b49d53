// SPDX-License-Identifier: MIT
#include "ComicArchiveFactory.h"

#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "NullArchive.h"
#include "RarArchive.h"

#include <QFileInfo>

ComicArchive* ComicArchiveFactory::instance(const QString& path)
{
    // Only the suffix is lower-cased; every archive gets the path as given.
    const QString suffix = QFileInfo(path.toLower()).suffix();
    if (suffix == QLatin1String("cbz") || suffix == QLatin1String("zave"))
        return new ComicZipArchive(path);
    if (suffix == QLatin1String("cbr"))
        return new RarArchive(path);
    if (ComicsReaderParser::isSupportedImage(path))
        return new NullArchive(path);
    return nullptr;
}
