#include "ComicPageNames.h"

#include "ComicArchive.h"
#include "ComicArchiveFactory.h"
#include "ComicsReaderParser.h"

#include <QFileInfo>

#include <algorithm>
#include <memory>

namespace {

QString pageStem(const QString& entry)
{
    return QFileInfo(entry).fileName().split(QLatin1Char('.'), Qt::KeepEmptyParts).first();
}

} // namespace

QStringList comicPageNames(const QString& path)
{
    QString cleanPath = path;
    cleanPath.remove(QStringLiteral("file://"));

    QStringList pages;
    {
        const std::unique_ptr<ComicArchive> archive(ComicArchiveFactory::instance(cleanPath));
        if (!archive)
            return pages;
        const QStringList entries = archive->files();
        for (const QString& entry : entries) {
            if (ComicsReaderParser::isSupportedImage(entry))
                pages << entry;
        }
    }
    pages.removeDuplicates();
    std::sort(pages.begin(), pages.end(), pageNameLessThan);
    return pages;
}

bool pageNameLessThan(const QString& a, const QString& b)
{
    // Deliberately plain: no natural or case-insensitive order, so "10" sorts
    // before "9" and "Z" before "a".
    return pageStem(a) < pageStem(b);
}
