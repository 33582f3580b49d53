// SPDX-License-Identifier: MIT
// A solid 7z comic read page by page through the extractor, as the plug-in
// reads it, against the same book as ZIP: without the extractor's cache of
// solid entries (every page decompresses the pages before it) and with it.
//
//   bench_solid --workload=DIR [benchmark flags]
//
// The book, 300 pages of the workload's size as JPEG of about 100 to 200 KB,
// is made once into DIR/solid-comic/. So is the workload's own comic as a
// solid 7z, whose pages 1, the middle one and the last are reported too.

#include "BenchProgram.h"
#include "ComicPagePainter.h"
#include "ComicZipArchive.h"
#include "PairedSamples.h"
#include "RarArchive.h"
#include "TestSupport.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QProcess>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

BenchProgram* program = nullptr;

struct Book
{
    QString solid;
    QString zip;
    QStringList pages;
    int quality = 0;
    qint64 pageBytes = 0;
};
Book book;

QString pageName(int index)
{
    return QStringLiteral("page%1.jpg").arg(index + 1, 3, 10, QLatin1Char('0'));
}

QByteArray jpeg(const QImage& image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    writer.write(image);
    return bytes;
}

// A page as a scanner gives it: painted at half the size and scaled up, so
// that its halftones blur as a scan's do and JPEG keeps it at the size of a
// scanned page.
QImage scanned(quint64 seed, const QSize& size)
{
    return ComicPagePainter(seed).page(size / 4).scaled(
        size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// The pages on all cores, at the highest quality that keeps page 1 within
// 200 KB, as scanned comics are commonly compressed.
std::vector<QByteArray> paint(int count, const QSize& size, int* quality)
{
    const QImage first = scanned(9000, size);
    *quality = 90;
    while (*quality > 10 && jpeg(first, *quality).size() > 200 * 1024)
        *quality -= 5;
    std::vector<QByteArray> pages(static_cast<size_t>(count));
    std::atomic<int> next(0);
    auto work = [&] {
        for (int page = next++; page < count; page = next++)
            pages[size_t(page)] = jpeg(scanned(9000 + quint64(page), size), *quality);
    };
    std::vector<std::thread> workers;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
        workers.emplace_back(work);
    for (std::thread& worker : workers)
        worker.join();
    return pages;
}

// Makes the book as solid 7z (7-Zip's defaults: LZMA2, one solid block) and
// as ZIP, unless a run made them already.
bool makeBook(const Workload& workload)
{
    const int count = workload.scale == QLatin1String("full") ? 300 : 6;
    const QString folder = QDir(workload.dir).absoluteFilePath(QStringLiteral("solid-comic"));
    book.solid = folder + QStringLiteral("/book.cb7");
    book.zip = folder + QStringLiteral("/book.cbz");
    for (int i = 0; i < count; ++i)
        book.pages << pageName(i);
    const QString stamp = folder + QStringLiteral("/made");
    if (QFileInfo(stamp).exists()) {
        const QList<QByteArray> words = TestSupport::readFile(stamp).split(' ');
        book.quality = words.value(0).toInt();
        book.pageBytes = words.value(1).toLongLong();
        return book.quality > 0 && QFileInfo(book.solid).exists() && QFileInfo(book.zip).exists();
    }
    const std::vector<QByteArray> pages = paint(count, workload.pageSize, &book.quality);
    TestSupport::TemporaryDir files;
    QList<TestSupport::ZipEntry> entries;
    qint64 total = 0;
    for (int i = 0; i < count; ++i) {
        if (!TestSupport::writeFile(files.filePath(pageName(i)), pages[size_t(i)]))
            return false;
        entries << TestSupport::ZipEntry(pageName(i).toUtf8(), pages[size_t(i)]);
        total += pages[size_t(i)].size();
    }
    book.pageBytes = total / count;
    QDir().mkpath(folder);
    QFile::remove(book.solid);
    QProcess archiver;
    archiver.setWorkingDirectory(files.path());
    archiver.start("7zz", { "a", "-bd", "-t7z", "-m0=lzma2", "-mx=5", "-ms=on", book.solid, "." });
    if (!archiver.waitForFinished(600000) || archiver.exitCode() != 0) {
        std::fprintf(stderr, "7zz could not make %s\n", qPrintable(book.solid));
        return false;
    }
    return TestSupport::writeZip(book.zip, entries)
        && TestSupport::writeFile(
            stamp, QByteArray::number(book.quality) + ' ' + QByteArray::number(book.pageBytes));
}

// The workload's comic as a solid 7z, as 7-Zip makes it from the ZIP's
// files, unless a run made it already.
bool makeWorkloadBook(const Workload& workload, QString* solid)
{
    const QString folder = QDir(workload.dir).absoluteFilePath(QStringLiteral("solid-comic"));
    *solid = folder + QStringLiteral("/comic.cb7");
    const QString stamp = folder + QStringLiteral("/comic-made");
    if (QFileInfo(stamp).exists())
        return QFileInfo(*solid).exists();
    QDir().mkpath(folder);
    QFile::remove(*solid);
    TestSupport::TemporaryDir files;
    QProcess archiver;
    archiver.setWorkingDirectory(files.path());
    archiver.start("7zz", { "x", "-bd", workload.comic() });
    bool made = archiver.waitForFinished(600000) && archiver.exitCode() == 0;
    if (made) {
        archiver.start("7zz", { "a", "-bd", "-t7z", "-m0=lzma2", "-mx=5", "-ms=on", *solid, "." });
        made = archiver.waitForFinished(1800000) && archiver.exitCode() == 0;
    }
    if (!made) {
        std::fprintf(stderr, "7zz could not make %s\n", qPrintable(*solid));
        return false;
    }
    return TestSupport::writeFile(stamp, QByteArray());
}

// Each book's filler holds its lock while it works: taking them all waits
// for every filler to end.
void waitForFillers(const QString& cache)
{
    for (const QString& folder : QDir(cache).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const int fd = ::open(
            QFile::encodeName(cache + '/' + folder + "/lock").constData(), O_RDWR | O_CLOEXEC);
        if (fd >= 0) {
            ::flock(fd, LOCK_EX);
            ::close(fd);
        }
    }
}

// One page from each book in turns; false when they differ.
bool pagePair(RarArchive& solid, ComicZipArchive& zip, int index, PairedSamples* times)
{
    QImage fromSolid, fromZip;
    double ours = 0, reference = 0;
    const QString& name = book.pages.at(index);
    PairedSamples::inTurns(
        index, [&] { ours = PairedSamples::seconds([&] { fromSolid = solid.data(name); }); },
        [&] { reference = PairedSamples::seconds([&] { fromZip = zip.data(name); }); });
    times->add(ours, reference);
    return !fromSolid.isNull() && fromSolid == fromZip;
}

// Pages 1, the middle one and the last, as counters: each page's median
// over the runs, and the median of its pairs' ratios.
void reportPages(benchmark::State& state, const QVector<PairedSamples>& pages, const QList<int>& at)
{
    const char* names[] = { "p1", "pmid", "plast" };
    for (int i = 0; i < at.size() && i < 3; ++i) {
        const PairedSamples& page = pages.at(at.at(i));
        state.counters[std::string(names[i]) + "_ms"] = page.oursMedian() * 1000;
        state.counters[std::string(names[i]) + "_zip_ms"] = page.referenceMedian() * 1000;
        state.counters[std::string(names[i]) + "_ratio"] = page.ratio();
    }
    state.counters["pages"] = book.pages.size();
    state.counters["page_kb"] = book.pageBytes / 1024.0;
    state.counters["quality"] = book.quality;
    state.counters["book_mb"] = QFileInfo(book.solid).size() / 1048576.0;
}

// Without the cache: pages 1, the middle one and the last, each decompressing
// what comes before it.
void withoutCache(benchmark::State& state)
{
    qputenv("TAMBER_UNRAR_CACHE_LIMIT", "0");
    RarArchive solid(book.solid);
    ComicZipArchive zip(book.zip);
    const int last = book.pages.size() - 1;
    QVector<PairedSamples> pages(3);
    for (auto _ : state) {
        double total = 0;
        int slot = 0;
        for (int index : { 0, last / 2, last }) {
            if (!pagePair(solid, zip, index, &pages[slot])) {
                state.SkipWithError("a page of the 7z differs from the ZIP's");
                return;
            }
            total += pages[slot++].ours().last();
        }
        state.SetIterationTime(total);
    }
    ::unsetenv("TAMBER_UNRAR_CACHE_LIMIT");
    reportPages(state, pages, { 0, 1, 2 });
}

// With the cache, empty at first: every page from the first to the last, as
// a reader turns them, the pages after the first served by what the first
// run's filler keeps.
void withCache(benchmark::State& state)
{
    QVector<PairedSamples> pages(book.pages.size());
    for (auto _ : state) {
        TestSupport::TemporaryDir cache;
        qputenv("TAMBER_UNRAR_CACHE_DIR", QFile::encodeName(cache.path()));
        RarArchive solid(book.solid);
        ComicZipArchive zip(book.zip);
        double total = 0;
        for (int index = 0; index < book.pages.size(); ++index) {
            if (!pagePair(solid, zip, index, &pages[index])) {
                state.SkipWithError("a page of the 7z differs from the ZIP's");
                return;
            }
            total += pages.at(index).ours().last();
        }
        waitForFillers(cache.path());
        ::unsetenv("TAMBER_UNRAR_CACHE_DIR");
        state.SetIterationTime(total);
    }
    const int last = book.pages.size() - 1;
    reportPages(state, pages, { 0, last / 2, last });
    // Every page after the first against its ZIP twin: the worst, the 95th
    // percentile and the median.
    QVector<double> ratios;
    for (int i = 1; i < pages.size(); ++i)
        ratios << pages.at(i).ratio();
    if (ratios.isEmpty())
        return;
    const auto worst = std::max_element(ratios.begin(), ratios.end());
    state.counters["worst_ratio_after_p1"] = *worst;
    state.counters["worst_page"] = double(worst - ratios.begin()) + 2;
    state.counters["median_ratio_after_p1"] = PairedSamples::median(ratios);
    std::sort(ratios.begin(), ratios.end());
    state.counters["p95_ratio_after_p1"] = ratios.at(int(ratios.size() * 0.95));
}

// The workload's comic as a solid 7z: pages 1, the middle one and the last
// without the cache, each once, then with it: page 1 with the cache empty,
// and once its filler has kept the book, each page again from the cache.
void workloadBook(benchmark::State& state)
{
    QString path;
    if (!makeWorkloadBook(program->workload(), &path)) {
        state.SkipWithError("the workload's comic could not be made a solid 7z");
        return;
    }
    RarArchive solid(path);
    ComicZipArchive zip(program->workload().comic());
    const int pages = program->workload().comicPages;
    const int at[] = { 0, (pages - 1) / 2, pages - 1 };
    const char* names[] = { "p1", "pmid", "plast" };
    // Each page once from the ZIP and once from the 7z, in the same order. A
    // page past the plug-in's wait of 30 s comes back null: it is counted,
    // not taken for a fault.
    auto pair = [&](int index, const std::string& counter) {
        const QString name = Workload::pageName(index);
        QImage fromSolid, fromZip;
        const double zipSeconds = PairedSamples::seconds([&] { fromZip = zip.data(name); });
        const double seconds = PairedSamples::seconds([&] { fromSolid = solid.data(name); });
        state.counters[counter + "_ms"] = seconds * 1000;
        state.counters[counter + "_zip_ms"] = zipSeconds * 1000;
        if (fromSolid.isNull() && seconds >= 29.5) {
            state.counters[counter + "_over_wait"] = 1;
            return true;
        }
        return !fromSolid.isNull() && fromSolid == fromZip;
    };
    for (auto _ : state) {
        bool same = true;
        qputenv("TAMBER_UNRAR_CACHE_LIMIT", "0");
        for (int i = 0; i < 3; ++i)
            same = pair(at[i], std::string(names[i]) + "_before") && same;
        ::unsetenv("TAMBER_UNRAR_CACHE_LIMIT");
        TestSupport::TemporaryDir cache;
        qputenv("TAMBER_UNRAR_CACHE_DIR", QFile::encodeName(cache.path()));
        same = pair(at[0], "p1_first") && same;
        const double fill = PairedSamples::seconds([&] { waitForFillers(cache.path()); });
        state.counters["fill_s"] = fill + state.counters["p1_first_ms"] / 1000;
        for (int i = 0; i < 3; ++i)
            same = pair(at[i], std::string(names[i]) + "_after") && same;
        ::unsetenv("TAMBER_UNRAR_CACHE_DIR");
        if (!same) {
            state.SkipWithError("a page of the 7z differs from the ZIP's");
            return;
        }
        state.SetIterationTime(fill);
    }
    state.counters["pages"] = pages;
    state.counters["book_mb"] = QFileInfo(path).size() / 1048576.0;
}

} // namespace

int main(int argc, char** argv)
{
    BenchProgram bench(argc, argv);
    program = &bench;
    const std::unique_ptr<QApplication> application = bench.makeApplication(argc, argv);
    if (!application || !bench.loadWorkload() || !makeBook(bench.workload()))
        return 2;
    benchmark::RegisterBenchmark("solid/without_cache", withoutCache)
        ->Iterations(bench.isSmoke() ? 1 : 3)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("solid/with_cache", withCache)
        ->Iterations(bench.isSmoke() ? 1 : 5)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("solid/workload_book", workloadBook)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    return bench.run();
}
