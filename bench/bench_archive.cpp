// SPDX-License-Identifier: MIT
// The archives on their own: a very large single image, decoded within the
// pixel budget, against a full decode of it (time and memory, each in a
// process of its own); and a page through the RAR extractor against the same
// page from the ZIP.
//
//   bench_archive --workload=DIR [benchmark flags]
//   bench_archive --decode=bounded|full FILE   (the child that decodes)

#include "BenchCompat.h"
#include "BenchProgram.h"
#include "ChildProcess.h"
#include "ComicZipArchive.h"
#include "ComicsReaderParser.h"
#include "MemoryStatus.h"
#include "NullArchive.h"
#include "PairedSamples.h"
#include "RarArchive.h"

#include <QApplication>
#include <QFileInfo>
#include <QImageReader>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

namespace {

BenchProgram* program = nullptr;

// Decodes the file once, the single-image archive's way or in full, and prints
// "baseline KiB", "peak KiB", "seconds S" and "size W H".
int decodeChild(const QString& mode, const QString& file)
{
    // The image plug-ins are loaded before the baseline, as a host has them.
    QImageReader::supportedImageFormats();
    const qint64 baseline = MemoryStatus::now().residentKiB;
    QImage image;
    const double elapsed = PairedSamples::seconds([&] {
        if (mode == QLatin1String("bounded"))
            image = NullArchive(file).data(file);
        else
            image = QImageReader(file).read();
    });
    if (image.isNull())
        return 1;
    std::printf("baseline %lld\npeak %lld\nseconds %.9f\nsize %d %d\n", baseline,
        MemoryStatus::now().peakKiB, elapsed, image.width(), image.height());
    return 0;
}

struct Decode
{
    bool ok = false;
    double seconds = 0;
    // Above the process's resident set before decoding.
    qint64 peakKiB = 0;
    QSize size;
};

Decode decodeInChild(const QString& mode, const QString& file)
{
    const ChildProcess::Result result = ChildProcess::run(
        { QCoreApplication::applicationFilePath(), "--decode=" + mode, file }, {}, true);
    Decode decode;
    if (!result.ok())
        return decode;
    qint64 baseline = 0;
    qint64 peak = 0;
    for (const QByteArray& line : result.output.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2 && words.first() == "baseline")
            baseline = words.at(1).toLongLong();
        else if (words.size() == 2 && words.first() == "peak")
            peak = words.at(1).toLongLong();
        else if (words.size() == 2 && words.first() == "seconds")
            decode.seconds = words.at(1).toDouble();
        else if (words.size() == 3 && words.first() == "size")
            decode.size = QSize(words.at(1).toInt(), words.at(2).toInt());
    }
    decode.peakKiB = peak - baseline;
    decode.ok = peak > 0;
    return decode;
}

void largeImage(benchmark::State& state)
{
    const QString file = program->workload().largeImage();
    PairedSamples times;
    QVector<double> oursMemory;
    QVector<double> referenceMemory;
    int pair = 0;
    QSize shown;
    for (auto _ : state) {
        Decode ours;
        Decode full;
        PairedSamples::inTurns(
            pair++, [&] { ours = decodeInChild(QStringLiteral("bounded"), file); },
            [&] { full = decodeInChild(QStringLiteral("full"), file); });
        if (!ours.ok || !full.ok) {
            state.SkipWithError("a decoding process failed");
            return;
        }
        state.SetIterationTime(ours.seconds);
        times.add(ours.seconds, full.seconds);
        oursMemory << ours.peakKiB / 1024.0;
        referenceMemory << full.peakKiB / 1024.0;
        shown = ours.size;
    }
    times.report(state);
    const double ours = PairedSamples::median(oursMemory);
    const double reference = PairedSamples::median(referenceMemory);
    state.counters["ours_mib"] = ours;
    state.counters["reference_mib"] = reference;
    state.counters["memory_ratio"] = reference > 0 ? ours / reference : 0.0;
    state.counters["width"] = shown.width();
    state.counters["height"] = shown.height();
}

// The page names that both samples hold, in the archive's order.
QStringList sharedPages(ComicArchive& rar, ComicArchive& zip)
{
    const QStringList zipNames = zip.files();
    QStringList pages;
    for (const QString& name : rar.files()) {
        if (ComicsReaderParser::isSupportedImage(name) && zipNames.contains(name))
            pages << name;
    }
    return pages;
}

void rarPage(benchmark::State& state)
{
    const QString samples = QStringLiteral(TAMBER_SAMPLES_DIR);
    RarArchive rar(samples + QStringLiteral("/Captain Science #001-cbi.cbr"));
    ComicZipArchive zip(samples + QStringLiteral("/Captain Science #001.cbz"));
    const QStringList pages = sharedPages(rar, zip);
    if (pages.isEmpty()) {
        state.SkipWithError("the samples hold no pages in common");
        return;
    }
    PairedSamples times;
    int pair = 0;
    for (auto _ : state) {
        const QString& page = pages.at(pair % pages.size());
        QImage fromRar;
        QImage fromZip;
        double ours = 0;
        double reference = 0;
        auto readRar = [&] { ours = PairedSamples::seconds([&] { fromRar = rar.data(page); }); };
        auto readZip
            = [&] { reference = PairedSamples::seconds([&] { fromZip = zip.data(page); }); };
        PairedSamples::inTurns(pair++, readRar, readZip);
        if (fromRar.isNull() || fromRar != fromZip) {
            state.SkipWithError("the RAR page differs from the ZIP page");
            return;
        }
        state.SetIterationTime(ours);
        times.add(ours, reference);
    }
    times.report(state);
    state.counters["pages"] = pages.size();
}

} // namespace

int main(int argc, char** argv)
{
    BenchProgram bench(argc, argv);
    program = &bench;
    const QString decode = BenchProgram::takeOption(argc, argv, "decode");
    const std::unique_ptr<QApplication> application = bench.makeApplication(argc, argv);
    if (!application)
        return 2;
    if (!decode.isEmpty())
        return argc == 2 ? decodeChild(decode, QString::fromLocal8Bit(argv[1])) : 2;
    if (!bench.loadWorkload())
        return 2;

    benchmark::RegisterBenchmark("archive/large_image", largeImage)
        ->Iterations(bench.isSmoke() ? 1 : 5)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    if (QFileInfo(QStringLiteral(TAMBER_SAMPLES_DIR "/Captain Science #001-cbi.cbr")).exists())
        benchmark::RegisterBenchmark("archive/rar_page", rarPage)
            ->Iterations(bench.isSmoke() ? 2 : 40)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    else
        std::fprintf(stderr,
            "archive/rar_page skipped: the shared samples are not beside the "
            "checkout\n");
    return bench.run();
}
