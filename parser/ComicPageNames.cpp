#include "ComicPageNames.h"

#include "ComicArchive.h"
#include "ComicArchiveFactory.h"
#include "ComicsReaderParser.h"

#include <QStringView>
#include <QVector>

#include <algorithm>
#include <memory>
#include <numeric>

namespace {

// The file name's part before its first dot: what QFileInfo::fileName() and
// split('.').first() give, without allocating, since the sort asks for two
// stems on every comparison.
QStringView pageStem(const QString& entry)
{
    QStringView name(entry);
    name = name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
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

    // Each stem is taken once rather than twice per comparison. Sorting the
    // positions by their stems makes the same comparisons, and so the same
    // order, as sorting the names with pageNameLessThan.
    QVector<QStringView> stems;
    stems.reserve(pages.size());
    for (const QString& page : qAsConst(pages))
        stems << pageStem(page);
    QVector<int> order(pages.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
        [&stems](int a, int b) { return stems.at(a).compare(stems.at(b), Qt::CaseSensitive) < 0; });

    QStringList sorted;
    sorted.reserve(pages.size());
    for (int position : qAsConst(order))
        sorted << pages.at(position);
    return sorted;
}

bool pageNameLessThan(const QString& a, const QString& b)
{
    // Deliberately plain: no natural or case-insensitive order, so "10" sorts
    // before "9" and "Z" before "a".
    return pageStem(a).compare(pageStem(b), Qt::CaseSensitive) < 0;
}
