// SPDX-License-Identifier: MIT
// Pages in the formats our image plug-ins read (WebP, AVIF, JPEG XL): a page
// decoded through the plug-in against the format's own decoder program on
// the same file, and page turns in a comic of the format.
//
// The decoded page is the workload's page size, painted as the comic's pages
// are. WebP is encoded lossy by libwebp at the workload's quality; AVIF by
// `avifenc -s 8 -y 420` (default quality) and JPEG XL by `cjxl -d 1`, both
// from a PNG of the page. Ours is QImageReader's read() with the plug-in in
// bin/imageformats, the file opened afresh each time. The reference, taken in
// turns with ours:
//   - WebP: the decode time that `dwebp -v` reports (whole milliseconds);
//   - JPEG XL: the time of `djxl FILE out.ppm --num_threads=1`, from the
//     "W x H, R MP/s" line it prints for its decode alone (W·H / R);
//   - AVIF: avifdec prints no time of its own, so it is the wall time of
//     `avifdec --jobs 1 FILE out.y4m` less the wall time of
//     `avifdec --version`, run just before it, which starts the same program
//     and loads the same libraries but decodes nothing. What is left is the
//     decode plus reading the file and writing the Y4M, which ours does not do.
// Neither side pays for a process start.
//
// A page turn is timed as bench_view times it, `goToNextPage` and a paint
// against the baseline steps on the same page, in a comic of the format made
// from the workload comic's first pages (a few encoded, repeated).
//
//   bench_pageformats --workload=DIR [benchmark flags]

#include "BaselineSteps.h"
#include "BenchCompat.h"
#include "BenchProgram.h"
#include "ChildProcess.h"
#include "ComicPagePainter.h"
#include "PageTurns.h"
#include "PairedSamples.h"
#include "TestSupport.h"
#include "ZipWriter.h"

#include <QApplication>
#include <QFile>
#include <QImageReader>

#include <benchmark/benchmark.h>
#include <webp/encode.h>

namespace {

const QSize screen(1072, 1448);

BenchProgram* program = nullptr;

struct PageFormat
{
    // Qt's name for the format, also the files' suffix.
    QByteArray name;
    // The program that encodes a PNG into the format (none: libwebp here).
    QStringList encoder;
    // The format's own decoder program, and the Debian package of both.
    QString decoder;
    QString package;
    // The reference time of decoding file, in seconds; negative when it failed.
    double (*referenceSeconds)(const QString& decoder, const QString& file, const QString& dir);
};

QByteArray webpBytes(const QImage& image, int quality)
{
    const QImage page = image.convertToFormat(QImage::Format_ARGB32);
    uint8_t* output = nullptr;
    const size_t length = WebPEncodeBGRA(page.constBits(), page.width(), page.height(),
        page.bytesPerLine(), float(quality), &output);
    const QByteArray bytes(reinterpret_cast<const char*>(output), int(length));
    WebPFree(output);
    return bytes;
}

// The image in the format, in file; dir holds the encoder's PNG.
bool encode(const PageFormat& format, const QImage& image, const QString& file, const QString& dir,
    int quality)
{
    if (format.encoder.isEmpty()) {
        const QByteArray bytes = webpBytes(image, quality);
        QFile out(file);
        return !bytes.isEmpty() && out.open(QIODevice::WriteOnly)
            && out.write(bytes) == bytes.size();
    }
    // No alpha channel, so that the encoders make none.
    const QString png = dir + QStringLiteral("/source.png");
    if (!image.convertToFormat(QImage::Format_RGB32).save(png, "png"))
        return false;
    QStringList command = format.encoder;
    command[0] = BenchCompat::findExecutable(command.first());
    return ChildProcess::run(command << png << file).ok();
}

// dwebp's "Time to decode picture: 0.012s".
double dwebpSeconds(const QString& dwebp, const QString& file, const QString&)
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

// djxl 0.7's "1988 x 3056, 9.86 MP/s [9.86, 9.86], 1 reps, 1 threads.":
// the pixels over the rate.
double djxlSeconds(const QString& djxl, const QString& file, const QString& dir)
{
    const ChildProcess::Result result = ChildProcess::run(
        { djxl, file, dir + QStringLiteral("/out.ppm"), QStringLiteral("--num_threads=1") });
    if (!result.ok())
        return -1;
    const int rateEnd = result.errors.indexOf(" MP/s");
    if (rateEnd < 0)
        return -1;
    const int rateStart = result.errors.lastIndexOf(' ', rateEnd - 1) + 1;
    const double rate = result.errors.mid(rateStart, rateEnd - rateStart).toDouble();
    const int lineStart = result.errors.lastIndexOf('\n', rateEnd) + 1;
    const QList<QByteArray> words
        = result.errors.mid(lineStart, rateEnd - lineStart).replace(',', ' ').split(' ');
    if (words.size() < 3 || words.at(1) != "x")
        return -1;
    const double pixels = words.at(0).toDouble() * words.at(2).toDouble();
    return pixels > 0 && rate > 0 ? pixels / (rate * 1e6) : -1;
}

// The wall time of a decode less that of a run that decodes nothing.
double avifdecSeconds(const QString& avifdec, const QString& file, const QString& dir)
{
    const ChildProcess::Result idle = ChildProcess::run({ avifdec, QStringLiteral("--version") });
    const ChildProcess::Result decode = ChildProcess::run({ avifdec, QStringLiteral("--jobs"),
        QStringLiteral("1"), file, dir + QStringLiteral("/out.y4m") });
    if (!idle.ok() || !decode.ok())
        return -1;
    return decode.seconds - idle.seconds;
}

const QList<PageFormat>& formats()
{
    static const QList<PageFormat> list = {
        { "webp", {}, QStringLiteral("dwebp"), QStringLiteral("webp"), dwebpSeconds },
        { "avif",
            { QStringLiteral("avifenc"), QStringLiteral("-s"), QStringLiteral("8"),
                QStringLiteral("-y"), QStringLiteral("420") },
            QStringLiteral("avifdec"), QStringLiteral("libavif-bin"), avifdecSeconds },
        { "jxl", { QStringLiteral("cjxl"), QStringLiteral("-d"), QStringLiteral("1") },
            QStringLiteral("djxl"), QStringLiteral("libjxl-tools"), djxlSeconds },
    };
    return list;
}

// Why the format cannot be benchmarked here, or an empty string.
std::string missing(const PageFormat& format)
{
    QStringList programs(format.decoder);
    if (!format.encoder.isEmpty())
        programs << format.encoder.first();
    for (const QString& name : programs) {
        if (BenchCompat::findExecutable(name).isEmpty())
            return QStringLiteral("%1 is not installed (Debian package %2)")
                .arg(name, format.package)
                .toStdString();
    }
    if (!QImageReader::supportedImageFormats().contains(format.name))
        return "no " + std::string(format.name.constData()) + " image plug-in beside the program";
    return std::string();
}

void decodePage(benchmark::State& state, const PageFormat& format)
{
    const std::string why = missing(format);
    if (!why.empty()) {
        state.SkipWithError(why.c_str());
        return;
    }
    TestSupport::TemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("page.") + QLatin1String(format.name));
    const Workload& workload = program->workload();
    if (!encode(format, ComicPagePainter(1).page(workload.pageSize), file, dir.path(),
            workload.quality)) {
        state.SkipWithError("the page could not be encoded");
        return;
    }
    const QString decoder = BenchCompat::findExecutable(format.decoder);

    PairedSamples times;
    int pair = 0;
    for (auto _ : state) {
        QImage image;
        double ours = 0;
        double reference = 0;
        PairedSamples::inTurns(
            pair++,
            [&] { ours = PairedSamples::seconds([&] { image = QImageReader(file).read(); }); },
            [&] { reference = format.referenceSeconds(decoder, file, dir.path()); });
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

// The workload comic's first pages encoded in the format, repeated in order
// to make a comic of `pages` pages, in dir/comic.cbz; its path, or empty.
QString makeComic(const PageFormat& format, const QString& dir, int distinct, int pages)
{
    const Workload& workload = program->workload();
    BaselineSteps source(workload.comic(), screen);
    QList<QByteArray> encoded;
    for (int i = 0; i < distinct; ++i) {
        const QString file = dir + QStringLiteral("/page.") + QLatin1String(format.name);
        const QImage page = BaselineSteps::decode(source.inflate(Workload::pageName(i)));
        QFile read(file);
        if (page.isNull() || !encode(format, page, file, dir, workload.quality)
            || !read.open(QIODevice::ReadOnly))
            return QString();
        encoded << read.readAll();
    }
    const QString comic = dir + QStringLiteral("/comic.cbz");
    ZipWriter zip(comic);
    for (int i = 0; i < pages; ++i) {
        if (!zip.add(Workload::pageName(i).toUtf8(), encoded.at(i % distinct)))
            return QString();
    }
    return zip.close() ? comic : QString();
}

void pageTurn(benchmark::State& state, const PageFormat& format, int distinct)
{
    const std::string why = missing(format);
    if (!why.empty()) {
        state.SkipWithError(why.c_str());
        return;
    }
    PageTurns::keepLargeBlocks();
    TestSupport::TemporaryDir dir;
    const QString comic = makeComic(format, dir.path(), distinct, int(state.max_iterations) + 1);
    if (comic.isEmpty()) {
        state.SkipWithError("the comic could not be made");
        return;
    }
    PairedSamples samples;
    if (!PageTurns::time(state, comic, screen, samples))
        return;
    samples.report(state);
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

    const bool smoke = bench.isSmoke();
    for (const PageFormat& format : formats()) {
        // As many pairs for WebP as before; the others' decodes take longer.
        const int decodes = smoke ? 2 : format.name == "webp" ? 40 : 20;
        benchmark::RegisterBenchmark((format.name + "/decode_page").constData(),
            [&format](benchmark::State& state) { decodePage(state, format); })
            ->Iterations(decodes)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    for (const PageFormat& format : formats()) {
        const int distinct = qMin(smoke ? 1 : 4, bench.workload().comicPages);
        // Each distinct page as often as the others.
        benchmark::RegisterBenchmark((format.name + "/page_turn").constData(),
            [&format, distinct](benchmark::State& state) { pageTurn(state, format, distinct); })
            ->Iterations(smoke ? 2 : 5 * distinct)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    return bench.run();
}
