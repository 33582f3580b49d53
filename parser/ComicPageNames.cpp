// SPDX-License-Identifier: MIT
#include "ComicPageNames.h"

#include "ComicArchive.h"
#include "ComicArchiveFactory.h"
#include "ComicsReaderParser.h"

#include "QtCompat.h"

#include <QStringRef>
#include <QVector>

#include <memory>
#include <numeric>

namespace {

// The file name's part before its first dot: what QFileInfo::fileName() and
// split('.').first() give, without allocating, since the sort asks for two
// stems on every comparison.
QStringRef pageStem(const QString& entry)
{
    const int start = entry.lastIndexOf(QLatin1Char('/')) + 1;
    const int dot = entry.indexOf(QLatin1Char('.'), start);
    return dot < 0 ? entry.midRef(start) : entry.midRef(start, dot - start);
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
    const QStringList& names = pages;
    QVector<QStringRef> stems;
    stems.reserve(names.size());
    for (const QString& page : names)
        stems << pageStem(page);
    QVector<int> order(names.size());
    std::iota(order.begin(), order.end(), 0);
    QtCompat::sort(order.begin(), order.end(), [&stems](int a, int b) {
        return QStringRef::compare(stems.at(a), stems.at(b), Qt::CaseSensitive) < 0;
    });

    QStringList sorted;
    sorted.reserve(names.size());
    for (int position : order)
        sorted << names.at(position);
    return sorted;
}

bool pageNameLessThan(const QString& a, const QString& b)
{
    // Deliberately plain: no natural or case-insensitive order, so "10" sorts
    // before "9" and "Z" before "a".
    return QStringRef::compare(pageStem(a), pageStem(b), Qt::CaseSensitive) < 0;
}
