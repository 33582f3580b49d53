// SPDX-License-Identifier: MIT
// Page discovery and ordering over arbitrary entry names. The input is one
// name per line (bytes as Latin-1, as the ZIP archive reads them). The
// comparator must be a strict weak ordering, or sorting is undefined; the page
// list of a ZIP holding those names must be exactly its image entries, each
// once, in that order.

#include "ComicPageNames.h"
#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "FuzzSupport.h"

#include <QFile>

#include <algorithm>
#include <zip.h>

namespace {

void require(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// Irreflexive, asymmetric, transitive, and with transitive incomparability.
void checkStrictWeakOrder(const QStringList& names)
{
    const int n = qMin(names.size(), 12);
    for (int i = 0; i < n; ++i) {
        const QString& a = names.at(i);
        require(!pageNameLessThan(a, a));
        for (int j = 0; j < n; ++j) {
            const QString& b = names.at(j);
            const bool ab = pageNameLessThan(a, b);
            require(!(ab && pageNameLessThan(b, a)));
            for (int k = 0; k < n; ++k) {
                const QString& c = names.at(k);
                if (ab && pageNameLessThan(b, c))
                    require(pageNameLessThan(a, c));
                const bool abEquivalent = !ab && !pageNameLessThan(b, a);
                const bool bcEquivalent = !pageNameLessThan(b, c) && !pageNameLessThan(c, b);
                if (abEquivalent && bcEquivalent)
                    require(!pageNameLessThan(a, c) && !pageNameLessThan(c, a));
            }
        }
    }
}

// A ZIP whose entries carry the names as raw bytes; false if libzip refuses one.
bool writeZip(const QString& path, const QList<QByteArray>& names)
{
    zip_t* archive
        = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (!archive)
        return false;
    for (const QByteArray& name : names) {
        zip_source_t* source = zip_source_buffer(archive, nullptr, 0, 0);
        if (!source || zip_file_add(archive, name.constData(), source, ZIP_FL_ENC_RAW) < 0) {
            zip_source_free(source);
            zip_discard(archive);
            return false;
        }
    }
    return zip_close(archive) == 0;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzSupport::initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(data), int(size));
    QList<QByteArray> names = input.split('\n');
    if (names.size() > 200)
        return 0;
    QStringList listed;
    for (const QByteArray& name : names)
        listed << QString::fromLatin1(name);
    checkStrictWeakOrder(listed);

    // libzip refuses empty and repeated names, and names with NUL end early.
    names.removeAll(QByteArray());
    for (QByteArray& name : names)
        name = name.left(name.indexOf('\0') < 0 ? name.size() : name.indexOf('\0'));
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    names.removeAll(QByteArray());
    static const QString path = FuzzSupport::scratchFile(QStringLiteral("cbz"));
    if (!writeZip(path, names))
        return 0;

    // libzip may recode names that are not UTF-8, so the archive's own listing
    // is what the pages are drawn from.
    QStringList expected;
    for (const QString& entry : ComicZipArchive(path).files()) {
        if (ComicsReaderParser::isSupportedImage(entry) && !expected.contains(entry))
            expected << entry;
    }
    const QStringList pages = comicPageNames(QStringLiteral("file://") + path);
    require(pages.size() == expected.size());
    require(std::is_sorted(pages.begin(), pages.end(), pageNameLessThan));
    QStringList sortedPages = pages;
    std::sort(sortedPages.begin(), sortedPages.end());
    std::sort(expected.begin(), expected.end());
    require(sortedPages == expected);
    return 0;
}
