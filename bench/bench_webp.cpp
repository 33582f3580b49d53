// SPDX-License-Identifier: MIT
// A WebP page through the image plug-in against libwebp's own decoder program
// on the same file: the workload's page size, painted as the comic's pages
// are and encoded lossy at the workload's quality.
//
// Ours is QImageReader's read() with the plug-in in bin/imageformats, the file
// opened afresh each time. The reference is the time that `dwebp -v` reports
// for its decode alone (printed in whole milliseconds), so that neither side
// pays for a process start.
//
//   bench_webp --workload=DIR [benchmark flags]

#include "BenchCompat.h"
#include "BenchProgram.h"
#include "ChildProcess.h"
#include "ComicPagePainter.h"
#include "PairedSamples.h"

#include <QApplication>
#include <QFile>
#include <QImageReader>

#include <benchmark/benchmark.h>
#include <webp/encode.h>

namespace {

BenchProgram* program = nullptr;

bool writeLossyPage(const QString& path, const QSize& size, int quality)
{
    const QImage page = ComicPagePainter(1).page(size).convertToFormat(QImage::Format_ARGB32);
    uint8_t* output = nullptr;
    const size_t length = WebPEncodeBGRA(page.constBits(), page.width(), page.height(),
        page.bytesPerLine(), float(quality), &output);
    QFile file(path);
    const bool written = length > 0 && file.open(QIODevice::WriteOnly)
        && file.write(reinterpret_cast<const char*>(output), qint64(length)) == qint64(length);
    WebPFree(output);
    return written;
}

// dwebp's "Time to decode picture: 0.012s"; negative when it failed.
double dwebpSeconds(const QString& dwebp, const QString& file)
{
    const ChildProcess::Result result = ChildProcess::run({ dwebp, QStringLiteral("-v"), file });
    if (!result.ok())
        return -1;
    const QByteArray marker("Time to decode picture: ");
    const int at = result.errors.indexOf(marker);
    if (at < 0)
        return -1;
    const int end = result.errors.indexOf('s', at + marker.size());
    return result.errors.mid(at + marker.size(), end - at - marker.size()).toDouble();
}

void decodePage(benchmark::State& state)
{
    const QString dwebp = BenchCompat::findExecutable(QStringLiteral("dwebp"));
    if (dwebp.isEmpty()) {
        state.SkipWithError("dwebp is not installed (Debian package webp)");
        return;
    }
    if (!QImageReader::supportedImageFormats().contains("webp")) {
        state.SkipWithError("no webp image plug-in beside the program");
        return;
    }
    BenchCompat::TemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("page.webp"));
    const Workload& workload = program->workload();
    if (!writeLossyPage(file, workload.pageSize, workload.quality)) {
        state.SkipWithError("libwebp could not encode the page");
        return;
    }

    PairedSamples times;
    int pair = 0;
    for (auto _ : state) {
        QImage image;
        double ours = 0;
        double reference = 0;
        PairedSamples::inTurns(
            pair++,
            [&] { ours = PairedSamples::seconds([&] { image = QImageReader(file).read(); }); },
            [&] { reference = dwebpSeconds(dwebp, file); });
        if (image.size() != workload.pageSize || reference < 0) {
            state.SkipWithError("a decode failed");
            return;
        }
        state.SetIterationTime(ours);
        times.add(ours, reference);
    }
    times.report(state);
    state.counters["bytes"] = double(QFile(file).size());
}

} // namespace

int main(int argc, char** argv)
{
    BenchProgram bench(argc, argv);
    program = &bench;
    const std::unique_ptr<QApplication> application = bench.makeApplication(argc, argv);
    if (!application)
        return 2;
    if (!bench.loadWorkload())
        return 2;

    benchmark::RegisterBenchmark("webp/decode_page", decodePage)
        ->Iterations(bench.isSmoke() ? 2 : 40)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    return bench.run();
}
