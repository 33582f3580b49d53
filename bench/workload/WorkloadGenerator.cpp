// SPDX-License-Identifier: MIT
#include "WorkloadGenerator.h"

#include "BenchCompat.h"
#include "ComicPagePainter.h"
#include "ZipWriter.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QVector>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace {

// Deterministic shuffle, so that entries are in no particular order, as a
// file system hands them to an archiver.
template<typename T> void shuffle(QVector<T>& items, quint64 seed)
{
    for (int i = items.size() - 1; i > 0; --i) {
        seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
        std::swap(items[i], items[int((seed >> 33) % quint64(i + 1))]);
    }
}

const QByteArray comicInfo = "<?xml version=\"1.0\"?>\n<ComicInfo><Series>Bench</Series>"
                             "<Writer>Bench</Writer></ComicInfo>\n";

// A book in the library holds this many pages: pairs of books add up to 2 * mean.
int pagesOfBook(int book, int mean)
{
    const int spread = (book / 2 * 37) % (mean * 3 / 5 + 1);
    return book % 2 == 0 ? mean + spread : mean - spread;
}

} // namespace

WorkloadGenerator::WorkloadGenerator(const Workload& plan)
    : plan(plan)
{
}

bool WorkloadGenerator::run(QString* error)
{
    QDir dir(plan.dir);
    if (dir.exists() && !BenchCompat::removeTree(plan.dir)) {
        *error = QStringLiteral("%1: cannot remove the old workload").arg(plan.dir);
        return false;
    }
    if (!QDir().mkpath(plan.dir)) {
        *error = QStringLiteral("%1: cannot make the folder").arg(plan.dir);
        return false;
    }
    if (!comic(error) || !entriesComic(error) || !library(error) || !largeImage(error)
        || !bigBook(error))
        return false;
    if (!plan.save()) {
        *error = QStringLiteral("%1: cannot write the manifest").arg(plan.dir);
        return false;
    }
    return true;
}

QByteArray WorkloadGenerator::jpeg(const QImage& image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    writer.write(image);
    return bytes;
}

QList<QByteArray> WorkloadGenerator::pages(
    int count, const QSize& size, quint64 firstSeed, int quality) const
{
    std::vector<QByteArray> result(static_cast<size_t>(count));
    std::atomic<int> nextPage(0);
    auto work = [&] {
        for (int page = nextPage++; page < count; page = nextPage++)
            result[size_t(page)]
                = jpeg(ComicPagePainter(firstSeed + quint64(page)).page(size), quality);
    };
    std::vector<std::thread> workers;
    const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    for (unsigned i = 0; i < threads; ++i)
        workers.emplace_back(work);
    for (std::thread& worker : workers)
        worker.join();
    QList<QByteArray> list;
    for (const QByteArray& page : result)
        list << page;
    return list;
}

bool WorkloadGenerator::comic(QString* error)
{
    const QList<QByteArray> images = pages(plan.comicPages, plan.pageSize, 1, plan.quality);
    ZipWriter zip(plan.comic());
    zip.add("ComicInfo.xml", comicInfo);
    for (int i = 0; i < images.size(); ++i) {
        if (images.at(i).isEmpty() || !zip.add(Workload::pageName(i).toUtf8(), images.at(i))) {
            *error = QStringLiteral("%1: cannot add page %2").arg(plan.comic()).arg(i + 1);
            return false;
        }
    }
    if (!zip.close()) {
        *error = QStringLiteral("%1: cannot write").arg(plan.comic());
        return false;
    }
    return true;
}

bool WorkloadGenerator::entriesComic(QString* error)
{
    // A long comic in chapter folders: one folder entry per chapter, its pages
    // after it, and one metadata entry; parsing reads no page, so all pages
    // share one small picture.
    const QByteArray thumbnail = jpeg(ComicPagePainter(7).page(QSize(124, 191)), plan.quality);
    const int chapters = plan.entryChapters();
    const int pageCount = plan.entryPages();
    QVector<int> chapterOrder(chapters);
    for (int i = 0; i < chapters; ++i)
        chapterOrder[i] = i;
    shuffle(chapterOrder, 11);

    ZipWriter zip(plan.entriesComic());
    bool ok = zip.add("ComicInfo.xml", comicInfo);
    for (int chapter : chapterOrder) {
        const QByteArray folder
            = QStringLiteral("chapter-%1/").arg(chapter + 1, 2, 10, QLatin1Char('0')).toUtf8();
        ok = ok && zip.add(folder);
        QVector<int> pageOrder;
        for (int page = chapter; page < pageCount; page += chapters)
            pageOrder << page;
        shuffle(pageOrder, quint64(chapter) + 13);
        for (int page : pageOrder)
            ok = ok
                && zip.add(folder
                        + QStringLiteral("page-%1.jpg")
                              .arg(page + 1, 4, 10, QLatin1Char('0'))
                              .toUtf8(),
                    thumbnail);
    }
    if (!ok || !zip.close()) {
        *error = QStringLiteral("%1: cannot write").arg(plan.entriesComic());
        return false;
    }
    return true;
}

bool WorkloadGenerator::library(QString* error)
{
    // Series folders of up to twenty books; importing reads no page, so the
    // pages are small pictures, each book's own.
    const int mean = plan.libraryPages / plan.books;
    for (int book = 0; book < plan.books; ++book) {
        const QString folder = QStringLiteral("%1/series-%2")
                                   .arg(plan.libraryDir())
                                   .arg(book / 20 + 1, 2, 10, QLatin1Char('0'));
        const QString path
            = QStringLiteral("%1/book-%2.cbz").arg(folder).arg(book + 1, 3, 10, QLatin1Char('0'));
        QDir().mkpath(folder);
        const QByteArray picture
            = jpeg(ComicPagePainter(quint64(book) + 1000).page(QSize(124, 191)), plan.quality);
        ZipWriter zip(path);
        bool ok = zip.add("ComicInfo.xml", comicInfo);
        const int count = pagesOfBook(book, mean);
        for (int page = 0; page < count; ++page)
            ok = ok && zip.add(Workload::pageName(page).toUtf8(), picture);
        if (!ok || !zip.close()) {
            *error = QStringLiteral("%1: cannot write").arg(path);
            return false;
        }
    }
    return true;
}

bool WorkloadGenerator::largeImage(QString* error)
{
    const QByteArray bytes = jpeg(ComicPagePainter(99).page(plan.largeSize), plan.quality);
    QFile file(plan.largeImage());
    if (bytes.isEmpty() || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        *error = QStringLiteral("%1: cannot write").arg(plan.largeImage());
        return false;
    }
    return true;
}

bool WorkloadGenerator::bigBook(QString* error)
{
    if (plan.bigBookPages == 0)
        return true;
    // Painted in batches into files, which the archive reads as it is written:
    // the book is larger than the memory a generator should take.
    const QString folder = plan.dir + QStringLiteral("/big-pages");
    const int batch = 64;
    ZipWriter zip(plan.bigBook());
    ZipWriter start(plan.bigBookStart());
    bool ok = QDir().mkpath(folder) && zip.add("ComicInfo.xml", comicInfo)
        && start.add("ComicInfo.xml", comicInfo);
    for (int first = 0; ok && first < plan.bigBookPages; first += batch) {
        const int count = qMin(batch, plan.bigBookPages - first);
        const QList<QByteArray> images
            = pages(count, plan.pageSize, 5000 + quint64(first), plan.bigBookQuality);
        for (int i = 0; ok && i < count; ++i) {
            const QString name = Workload::bigPageName(first + i);
            QFile file(folder + QLatin1Char('/') + name);
            ok = !images.at(i).isEmpty() && file.open(QIODevice::WriteOnly)
                && file.write(images.at(i)) == images.at(i).size();
            file.close();
            ok = ok && zip.addFile(name.toUtf8(), file.fileName());
            if (first + i < Workload::bigBookStartPages)
                ok = ok && start.addFile(name.toUtf8(), file.fileName());
        }
    }
    ok = ok && zip.close() && start.close();
    BenchCompat::removeTree(folder);
    if (!ok) {
        *error = QStringLiteral("%1: cannot write").arg(plan.bigBook());
        return false;
    }
    const qint64 size = QFileInfo(plan.bigBook()).size();
    if (size < Workload::bigBookMinimumBytes) {
        *error = QStringLiteral("%1: %2 bytes, short of %3; raise its pages' quality")
                     .arg(plan.bigBook())
                     .arg(size)
                     .arg(Workload::bigBookMinimumBytes);
        return false;
    }
    return true;
}
