// The reading view: a page turn against decoding the page alone, a pan against
// copying one screen of pixels, and the memory of reading a whole book.
//
//   bench_view --workload=DIR [--pages-csv=FILE] [--memory-csv=FILE] [benchmark flags]

#include "BenchCompat.h"
#include "BenchLibrary.h"
#include "BenchProgram.h"
#include "ChildProcess.h"
#include "ComicZipArchive.h"
#include "ComicsReader.h"
#include "MemoryStatus.h"
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

// Turning to the next page and painting it, against decoding the same page's
// bytes (read from the archive beforehand) with QImage::loadFromData.
void pageTurn(benchmark::State& state)
{
    const Workload& workload = program->workload();
    BenchLibrary library;
    const Volume book = library.import(workload.comic());
    if (book.getId().isEmpty()) {
        state.SkipWithError("the comic could not be imported");
        return;
    }
    QVector<QByteArray> pageBytes;
    {
        ComicZipArchive archive(workload.comic());
        for (int page = 0; page < workload.comicPages; ++page)
            pageBytes << archive.raw(Workload::pageName(page));
    }
    ReaderWindow window(screen);
    window.open(book);

    PairedSamples samples;
    int page = 0;
    for (auto _ : state) {
        ++page;
        double ours = 0;
        double reference = 0;
        auto turn = [&] {
            ours = PairedSamples::seconds([&] {
                window.view()->goToNextPage();
                window.paint();
            });
        };
        auto decode = [&] {
            reference = PairedSamples::seconds([&] {
                QImage image;
                image.loadFromData(pageBytes.at(page));
                benchmark::DoNotOptimize(image.constBits());
            });
        };
        PairedSamples::inTurns(page, turn, decode);
        if (window.renderedPage() != page) {
            state.SkipWithError("the view did not paint the next page");
            return;
        }
        state.SetIterationTime(ours);
        samples.add(ours, reference);
    }
    samples.report(state);

    if (!pagesCsv.isEmpty()) {
        QFile file(pagesCsv);
        if (file.open(QIODevice::WriteOnly)) {
            QTextStream out(&file);
            out << "page,turn_ms,decode_ms\n";
            for (int i = 0; i < samples.ours().size(); ++i)
                out << i + 2 << ',' << samples.ours().at(i) * 1e3 << ','
                    << samples.reference().at(i) * 1e3 << '\n';
        }
    }
}

// Where a page turn's time goes: the paint's steps one by one, outside the
// view, on the same pages: reading the entry (inflating it), decoding it,
// the smooth scale to fit the screen, and filling and drawing the screen.
// Beside them, what decoding straight to the fitted size would cost instead
// of the full decode and the scale (the JPEG decoder shrinks while decoding).
void pageTurnSteps(benchmark::State& state)
{
    const Workload& workload = program->workload();
    ComicZipArchive archive(workload.comic());
    QImage screenImage(screen, QImage::Format_RGB32);
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
        inflate << PairedSamples::seconds([&] { bytes = archive.raw(Workload::pageName(page)); });
        decode << PairedSamples::seconds([&] { decoded.loadFromData(bytes); });
        scale << PairedSamples::seconds([&] {
            scaled = decoded.scaled(screen, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        });
        draw << PairedSamples::seconds([&] {
            QPainter painter(&screenImage);
            painter.fillRect(screenImage.rect(), Qt::white);
            painter.drawImage(QRectF(QPointF(0, 0), screen), scaled,
                QRectF(QPointF((scaled.width() - screen.width()) / 2, 0), screen));
        });
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
    for (auto _ : state) {
        // Back and forth, so that the pan always changes and never reaches an edge.
        const QPoint drag
            = pair % 2 == 0 ? QPoint(-dragStep, -dragStep) : QPoint(dragStep, dragStep);
        double ours = 0;
        double reference = 0;
        auto repaint
            = [&] { ours = PairedSamples::seconds([&] { window.drag(drag); }); };
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
}

// Reads every page of the comic in one view, in a process of its own, and
// prints its resident set: "baseline KiB", one "page N KiB" per page, "peak KiB".
int readBook(const Workload& workload)
{
    BenchLibrary library;
    const Volume book = library.import(workload.comic());
    if (book.getId().isEmpty())
        return 1;
    ReaderWindow window(screen);
    std::printf("baseline %lld\n", MemoryStatus::now().residentKiB);
    window.open(book);
    std::printf("page 1 %lld\n", MemoryStatus::now().residentKiB);
    for (int page = 1; page < workload.comicPages; ++page) {
        window.view()->goToNextPage();
        window.paint();
        if (window.renderedPage() != page)
            return 1;
        std::printf("page %d %lld\n", page + 1, MemoryStatus::now().residentKiB);
    }
    std::printf("peak %lld\n", MemoryStatus::now().peakKiB);
    return 0;
}

// Peak resident set while reading all pages, against the process's baseline
// plus three decoded pages; and its growth from page 10 to the last page.
void readingMemory(benchmark::State& state)
{
    const Workload& workload = program->workload();
    ChildProcess::Result result;
    for (auto _ : state) {
        result = ChildProcess::run({ QCoreApplication::applicationFilePath(), "--read-book",
                                       "--workload=" + workload.dir },
            {}, true);
        state.SetIterationTime(result.seconds);
    }
    if (!result.ok()) {
        state.SkipWithError(("the reading process failed: " + result.errors).constData());
        return;
    }
    qint64 baseline = 0;
    qint64 peak = 0;
    QMap<int, qint64> pages;
    for (const QByteArray& line : result.output.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2 && words.first() == "baseline")
            baseline = words.at(1).toLongLong();
        else if (words.size() == 2 && words.first() == "peak")
            peak = words.at(1).toLongLong();
        else if (words.size() == 3 && words.first() == "page")
            pages.insert(words.at(1).toInt(), words.at(2).toLongLong());
    }
    const int early = qMin(10, workload.comicPages);
    const qint64 decodedPageKiB
        = qint64(workload.pageSize.width()) * workload.pageSize.height() * 4 / 1024;
    state.counters["baseline_mib"] = mebibytes(baseline);
    state.counters["peak_mib"] = mebibytes(peak);
    state.counters["limit_mib"] = mebibytes(baseline + 3 * decodedPageKiB);
    state.counters["ratio"] = double(peak) / double(baseline + 3 * decodedPageKiB);
    state.counters["early_page"] = early;
    state.counters["early_mib"] = mebibytes(pages.value(early));
    state.counters["last_mib"] = mebibytes(pages.value(workload.comicPages));
    state.counters["growth_mib"] = mebibytes(pages.value(workload.comicPages) - pages.value(early));

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

} // namespace

int main(int argc, char** argv)
{
    const bool child = argc > 1 && std::strcmp(argv[1], "--read-book") == 0;
    BenchProgram bench(argc, argv);
    program = &bench;
    pagesCsv = BenchProgram::takeOption(argc, argv, "pages-csv");
    memoryCsv = BenchProgram::takeOption(argc, argv, "memory-csv");
    const std::unique_ptr<QApplication> application = bench.makeApplication(argc, argv);
    if (!application)
        return 2;
    if (!bench.loadWorkload())
        return 2;
    if (child)
        return readBook(bench.workload());

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
    return bench.run();
}
