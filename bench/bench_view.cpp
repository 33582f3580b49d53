// SPDX-License-Identifier: MIT
// The reading view: a page turn against decoding the page alone, a pan against
// copying one screen of pixels, and the memory of reading a whole book.
//
//   bench_view --workload=DIR [--pages-csv=FILE] [--memory-csv=FILE] [benchmark flags]

#include "BaselineSteps.h"
#include "BenchCompat.h"
#include "BenchLibrary.h"
#include "BenchProgram.h"
#include "ChildProcess.h"
#include "ComicZipArchive.h"
#include "ComicsReader.h"
#include "Library.h"
#include "MemoryStatus.h"
#include "PageTurns.h"
#include "PageletManager.h"
#include "PairedSamples.h"
#include "ReaderWindow.h"
#include "ZoomController.h"

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QTextStream>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <sys/resource.h>

namespace {

const QSize screen(1072, 1448);
const double zoomForPan = 2.0;
// A drag short of the 80 pixels that turn the page at an edge.
const int dragStep = 60;

BenchProgram* program = nullptr;
QString pagesCsv;
QString memoryCsv;

double mebibytes(qint64 kibibytes)
{
    return kibibytes / 1024.0;
}

long minorFaults()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// Turning to the next page and painting it, against the steps that showing
// the same page must take at least (BaselineSteps: inflate, full decode,
// smooth scale, draw), on a comic of its own opened beforehand.
void pageTurn(benchmark::State& state)
{
    PageTurns::keepLargeBlocks();
    PairedSamples samples;
    if (!PageTurns::time(state, program->workload().comic(), screen, samples))
        return;
    samples.report(state);

    if (!pagesCsv.isEmpty()) {
        QFile file(pagesCsv);
        if (file.open(QIODevice::WriteOnly)) {
            QTextStream out(&file);
            out << "page,turn_ms,steps_ms\n";
            for (int i = 0; i < samples.ours().size(); ++i)
                out << i + 2 << ',' << samples.ours().at(i) * 1e3 << ','
                    << samples.reference().at(i) * 1e3 << '\n';
        }
    }
}

// Where a page turn's time goes: the baseline steps one by one, on the same
// pages. Beside them, what decoding straight to the fitted size would cost
// instead of the full decode and the scale (the JPEG decoder shrinks while
// decoding), which the design rules out.
void pageTurnSteps(benchmark::State& state)
{
    const Workload& workload = program->workload();
    BaselineSteps steps(workload.comic(), screen);
    QVector<double> inflate;
    QVector<double> decode;
    QVector<double> scale;
    QVector<double> draw;
    QVector<double> decodeAtSize;
    int page = 0;
    for (auto _ : state) {
        page = page % (workload.comicPages - 1) + 1;
        QByteArray bytes;
        QImage decoded;
        QImage scaled;
        inflate << PairedSamples::seconds([&] { bytes = steps.inflate(Workload::pageName(page)); });
        decode << PairedSamples::seconds([&] { decoded = BaselineSteps::decode(bytes); });
        scale << PairedSamples::seconds([&] { scaled = steps.scale(decoded); });
        draw << PairedSamples::seconds([&] { steps.draw(scaled); });
        state.SetIterationTime(inflate.last() + decode.last() + scale.last() + draw.last());
        decodeAtSize << PairedSamples::seconds([&] {
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::ReadOnly);
            QImageReader reader(&buffer);
            QSize fitted = reader.size();
            fitted.scale(screen, Qt::KeepAspectRatio);
            reader.setScaledSize(fitted);
            benchmark::DoNotOptimize(reader.read().constBits());
        });
    }
    state.counters["inflate_ms"] = PairedSamples::median(inflate) * 1e3;
    state.counters["decode_ms"] = PairedSamples::median(decode) * 1e3;
    state.counters["scale_ms"] = PairedSamples::median(scale) * 1e3;
    state.counters["draw_ms"] = PairedSamples::median(draw) * 1e3;
    state.counters["decode_at_size_ms"] = PairedSamples::median(decodeAtSize) * 1e3;
}

// One repaint after a drag at zoom 2.0, against copying a screen-sized image
// once into another (a memcpy of its pixels, the least that showing a new
// screen can cost).
void pan(benchmark::State& state)
{
    BenchLibrary library;
    const Volume book = library.import(program->workload().comic());
    if (book.getId().isEmpty()) {
        state.SkipWithError("the comic could not be imported");
        return;
    }
    ReaderWindow window(screen);
    window.open(book);
    // A new zoom factor repaints at once, with the page scaled for it.
    window.view()->zoomController()->setZoomFactor(zoomForPan);
    // Where the view's own repaint does not reach the screen (Qt 4), the
    // page is scaled for the zoom here.
    if (!BenchCompat::repaintsItself())
        window.paint();

    QImage shown(screen, QImage::Format_RGB32);
    shown.fill(Qt::white);
    QImage copy(screen, QImage::Format_RGB32);
    copy.fill(Qt::black);

    PairedSamples samples;
    int pair = 0;
    long faults = 0;
    for (auto _ : state) {
        // Back and forth, so that the pan always changes and never reaches an edge.
        const QPoint drag
            = pair % 2 == 0 ? QPoint(-dragStep, -dragStep) : QPoint(dragStep, dragStep);
        double ours = 0;
        double reference = 0;
        // A repaint's minor page faults tell whether its screen-sized buffers
        // came from memory mapped afresh, which the kernel zeroes page by page.
        auto repaint = [&] {
            const long before = minorFaults();
            ours = PairedSamples::seconds([&] { window.drag(drag); });
            faults += minorFaults() - before;
        };
        auto copyScreen = [&] {
            reference = PairedSamples::seconds([&] {
                std::memcpy(copy.bits(), shown.constBits(), size_t(BenchCompat::imageBytes(shown)));
                benchmark::ClobberMemory();
            });
        };
        PairedSamples::inTurns(pair, repaint, copyScreen);
        ++pair;
        state.SetIterationTime(ours);
        samples.add(ours, reference);
    }
    if (window.pageImageSize().width() <= screen.width()) {
        state.SkipWithError("the page was not zoomed, so there was nothing to pan");
        return;
    }
    samples.report(state);
    state.counters["faults_per_repaint"] = pair ? double(faults) / pair : 0.0;
}

// Reads every page of a book in one view, in a process of its own, and
// prints its resident set: "baseline KiB", one "page N KiB" per page, "peak KiB".
int readBook(const QString& path)
{
    BenchLibrary library;
    const Volume book = library.import(path);
    if (book.getId().isEmpty())
        return 1;
    const int pages = Library::pages(book.getId()).size();
    ReaderWindow window(screen);
    std::printf("baseline %lld\n", MemoryStatus::now().residentKiB);
    window.open(book);
    std::printf("page 1 %lld\n", MemoryStatus::now().residentKiB);
    for (int page = 1; page < pages; ++page) {
        window.view()->goToNextPage();
        window.paint();
        if (window.renderedPage() != page)
            return 1;
        std::printf("page %d %lld\n", page + 1, MemoryStatus::now().residentKiB);
    }
    std::printf("peak %lld\n", MemoryStatus::now().peakKiB);
    return 0;
}

struct Reading
{
    qint64 baseline = 0;
    qint64 peak = 0;
    QMap<int, qint64> pages;
    double seconds = 0;
};

// readBook in a child process; false after skipping the benchmark.
bool readInChild(benchmark::State& state, const QString& path, Reading* reading)
{
    ChildProcess::Result result;
    for (auto _ : state) {
        result = ChildProcess::run({ QCoreApplication::applicationFilePath(), "--read-book",
                                       "--workload=" + program->workload().dir, "--book=" + path },
            {}, true);
        state.SetIterationTime(result.seconds);
    }
    if (!result.ok()) {
        state.SkipWithError(("the reading process failed: " + result.errors).constData());
        return false;
    }
    reading->seconds = result.seconds;
    for (const QByteArray& line : result.output.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2 && words.first() == "baseline")
            reading->baseline = words.at(1).toLongLong();
        else if (words.size() == 2 && words.first() == "peak")
            reading->peak = words.at(1).toLongLong();
        else if (words.size() == 3 && words.first() == "page")
            reading->pages.insert(words.at(1).toInt(), words.at(2).toLongLong());
    }
    return true;
}

// The counters of a reading: peak against baseline plus three decoded pages,
// and the growth from page 10 to the last.
void reportReading(benchmark::State& state, const Reading& reading)
{
    const Workload& workload = program->workload();
    const int last = reading.pages.isEmpty() ? 0 : (reading.pages.constEnd() - 1).key();
    const int early = qMin(10, last);
    const qint64 decodedPageKiB
        = qint64(workload.pageSize.width()) * workload.pageSize.height() * 4 / 1024;
    const qint64 limit = reading.baseline + 3 * decodedPageKiB;
    state.counters["baseline_mib"] = mebibytes(reading.baseline);
    state.counters["peak_mib"] = mebibytes(reading.peak);
    state.counters["limit_mib"] = mebibytes(limit);
    state.counters["ratio"] = double(reading.peak) / double(limit);
    state.counters["pages"] = last;
    state.counters["early_page"] = early;
    state.counters["early_mib"] = mebibytes(reading.pages.value(early));
    state.counters["last_mib"] = mebibytes(reading.pages.value(last));
    state.counters["growth_mib"]
        = mebibytes(reading.pages.value(last) - reading.pages.value(early));
}

// Peak resident set while reading all pages, against the process's baseline
// plus three decoded pages; and its growth from page 10 to the last page.
void readingMemory(benchmark::State& state)
{
    Reading reading;
    if (!readInChild(state, program->workload().comic(), &reading))
        return;
    reportReading(state, reading);
    const QMap<int, qint64>& pages = reading.pages;

    if (!memoryCsv.isEmpty()) {
        QFile file(memoryCsv);
        if (file.open(QIODevice::WriteOnly)) {
            QTextStream out(&file);
            out << "page,rss_mib\n";
            for (auto it = pages.constBegin(); it != pages.constEnd(); ++it)
                out << it.key() << ',' << mebibytes(it.value()) << '\n';
        }
    }
}

// The big book read through to its end in one view: the same counters as
// the comic's reading, and the time it took.
void bigBookMemory(benchmark::State& state)
{
    Reading reading;
    if (!readInChild(state, program->workload().bigBook(), &reading))
        return;
    reportReading(state, reading);
    state.counters["seconds"] = reading.seconds;
}

// Milliseconds to list a book's entries as the view lists them: its stored
// page records, and the file's names (libzip reads the central directory as
// the view's archive opens).
double listingMs(const Volume& book, const QString& path)
{
    return PairedSamples::seconds([&] {
        benchmark::DoNotOptimize(PageletManager::retrieveByBookId(book.getId(), QString()).size());
        ComicZipArchive archive(path);
        benchmark::DoNotOptimize(archive.files().size());
    }) * 1e3;
}

// Page 1 of the big book on screen, from a stored book to its first paint,
// against the same page as page 1 of a book of the big book's first pages,
// in turns, each in a new view; beside them the time to list each book's
// entries (its page records and its file's names). What the big book takes beyond the small one
// should be no more than its longer listing.
void bigBookOpen(benchmark::State& state)
{
    const Workload& workload = program->workload();
    BenchLibrary library;
    const Volume big = library.import(workload.bigBook());
    const Volume small = library.import(workload.bigBookStart());
    if (big.getId().isEmpty() || small.getId().isEmpty()) {
        state.SkipWithError("a book could not be imported");
        return;
    }
    PairedSamples samples;
    QVector<double> bigListing;
    QVector<double> smallListing;
    int pair = 0;
    for (auto _ : state) {
        // One window at a time: a window that waits for its book must not
        // see the other's events, in which it would paint without one.
        int bigPage = -1;
        int smallPage = -1;
        double ours = 0;
        double reference = 0;
        auto show = [](const Volume& book, int* page) {
            ReaderWindow window(screen);
            const double seconds = PairedSamples::seconds([&] { window.open(book); });
            *page = window.renderedPage();
            return seconds;
        };
        PairedSamples::inTurns(
            pair++, [&] { ours = show(big, &bigPage); },
            [&] { reference = show(small, &smallPage); });
        if (bigPage != 0 || smallPage != 0) {
            state.SkipWithError("page 1 was not painted");
            return;
        }
        bigListing << listingMs(big, workload.bigBook());
        smallListing << listingMs(small, workload.bigBookStart());
        state.SetIterationTime(ours);
        samples.add(ours, reference);
    }
    samples.report(state);
    const double bigList = PairedSamples::median(bigListing);
    const double smallList = PairedSamples::median(smallListing);
    state.counters["big_list_ms"] = bigList;
    state.counters["small_list_ms"] = smallList;
    // The big book's page 1 beyond the small book's and beyond the longer listing.
    state.counters["beyond_listing_ms"]
        = (samples.oursMedian() - samples.referenceMedian()) * 1e3 - (bigList - smallList);
}

} // namespace

int main(int argc, char** argv)
{
    const bool child = argc > 1 && std::strcmp(argv[1], "--read-book") == 0;
    BenchProgram bench(argc, argv);
    program = &bench;
    pagesCsv = BenchProgram::takeOption(argc, argv, "pages-csv");
    memoryCsv = BenchProgram::takeOption(argc, argv, "memory-csv");
    const QString book = BenchProgram::takeOption(argc, argv, "book");
    const std::unique_ptr<QApplication> application = bench.makeApplication(argc, argv);
    if (!application)
        return 2;
    if (!bench.loadWorkload())
        return 2;
    if (child)
        return readBook(book.isEmpty() ? bench.workload().comic() : book);

    const int turns = bench.workload().comicPages - 1;
    benchmark::RegisterBenchmark("view/page_turn", pageTurn)
        ->Iterations(turns)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("view/page_turn_steps", pageTurnSteps)
        ->Iterations(turns)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("view/pan_zoom2", pan)
        ->Iterations(bench.isSmoke() ? 10 : 300)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("view/reading_memory", readingMemory)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    // The big book is the full workload's only.
    if (bench.workload().bigBookPages > 0) {
        benchmark::RegisterBenchmark("view/big_book_open", bigBookOpen)
            ->Iterations(9)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("view/big_book_memory", bigBookMemory)
            ->Iterations(1)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    return bench.run();
}
