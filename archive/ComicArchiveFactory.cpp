// SPDX-License-Identifier: MIT
#include "ComicArchiveFactory.h"

#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "NullArchive.h"
#include "QtCompat.h"
#include "RarArchive.h"

#include <QFile>
#include <QFileInfo>

namespace {

// Whether the file starts as a RAR (4 or 5) or a 7z archive does. Such books
// are often named .cbz; the extractor reads them, as it reads a ZIP named .cbr.
bool holdsExtractorArchive(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray start = file.read(6);
    return start.startsWith(QByteArray("Rar!\x1a\x07", 6))
        || start == QByteArray("7z\xbc\xaf\x27\x1c", 6);
}

} // namespace

ComicArchive* ComicArchiveFactory::instance(const QString& path)
{
    // Only the suffix is lower-cased; every archive gets the path as given.
    const QString suffix = QFileInfo(path.toLower()).suffix();
    if (suffix == QLatin1String("cbz") || suffix == QLatin1String("zave")) {
        // The ZIP archive drops a "file://" itself; the extractor is given none.
        QString file = path;
        file.remove(QStringLiteral("file://"));
        if (holdsExtractorArchive(file))
            return new RarArchive(file);
        return new ComicZipArchive(path);
    }
    if (suffix == QLatin1String("cbr"))
        return new RarArchive(path);
    if (ComicsReaderParser::isSupportedImage(path))
        return new NullArchive(path);
    return nullptr;
}
