// SPDX-License-Identifier: MIT
// Pages far over the pixel budget, each the second page of a CBZ, shown by
// "tamber render" as a whole process:
//
// - bigpages/peak_*: the peak memory (wait4's ru_maxrss) of each hostile
//   page against that of the two pages of the budget, a 4096 x 4096 JPEG and
//   a comic-shaped 3300 x 5080 one, at zoom 1 upright and at zoom 3 in
//   landscape. The counters are each page's peak in MiB (the median over the
//   iterations), the worst hostile page's, the costlier budget page's, and
//   the ratio of those two, which should stay within 1.15.
// - bigpages/show_big_jpeg: the time to show a 12000 x 9000 JPEG page
//   against an ordinary page, in turns. The ordinary page is painted as the
//   workload's pages are, at their size; the big page is that page tiled.
//   cjpeg encodes both from the same pixels at the workload's quality, so
//   that the content and the encoder are alike and only the size differs.
//
// The hostile pages are those that tst_hostile checks, made the same way
// (one colour, a few kilobytes in the file), in a temporary folder, once.
//
//   bench_bigpages --workload=DIR [benchmark flags]

#include "BenchCompat.h"
#include "BenchProgram.h"
#include "ChildProcess.h"
#include "ComicPagePainter.h"
#include "PairedSamples.h"
#include "TestSupport.h"
#include "ZipWriter.h"

#include <QApplication>
#include <QDir>
#include <QMap>

#include <benchmark/benchmark.h>

namespace {

BenchProgram* program = nullptr;

struct Page
{
    // Its kind and size, which name its counter.
    QString key;
    // A page of the budget, which the others are measured against.
    bool budget;
    // false: tamber may refuse it (exit status 1) rather than show it.
    bool mustShow;
    QString book;
};

// A zoom and an orientation, as tamber render's options.
struct View
{
    const char* name;
    const char* zoom;
    const char* orientation;
};

const View views[] = {
    { "peak_zoom1_upright", "1", "0" },
    { "peak_zoom3_landscape", "3", "1" },
};

// The books, made on first use, and a library that holds them.
class BigPages
{
public:
    // Why the books could not be made; empty once they are.
    QString make();

    QList<Page> pages;
    QString ordinaryBook;
    QString bigJpegBook;

    ChildProcess::Result render(const QString& book, const QStringList& options) const;

private:
    QString file(const QString& name) const { return dir.filePath(name); }
    // The book KEY.cbz: a small page, then the given file as its second page.
    QString book(const QString& key, const QString& page);
    // A JPEG of one colour, made by cjpeg from pixels streamed to it, so that
    // no giant image is held here; its path, or empty.
    QString blankJpeg(const QSize& size);
    QString blankPng(const QSize& size, int depth, int colourType = 0);

    TestSupport::TemporaryDir dir;
    QByteArray firstPage;
    bool tried = false;
    QString error;
};

QString sizeName(const QSize& size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QString BigPages::book(const QString& key, const QString& page)
{
    const QString path = file(QStringLiteral("books/") + key + QStringLiteral(".cbz"));
    ZipWriter zip(path);
    const QByteArray entry = "2" + page.mid(page.lastIndexOf(QLatin1Char('.'))).toUtf8();
    return zip.add("1.png", firstPage) && zip.addFile(entry, page) && zip.close() ? path
                                                                                  : QString();
}

QString BigPages::blankJpeg(const QSize& size)
{
    const QString path = file(QStringLiteral("blank-") + sizeName(size) + QStringLiteral(".jpg"));
    const ChildProcess::Result cjpeg = ChildProcess::run({ "sh", "-c",
        "{ printf 'P6\\n%s %s\\n255\\n' $1 $2; head -c $(($1 * $2 * 3)) /dev/zero; } "
        "| cjpeg -outfile \"$3\"",
        "sh", QString::number(size.width()), QString::number(size.height()), path });
    return cjpeg.ok() ? path : QString();
}

QString BigPages::blankPng(const QSize& size, int depth, int colourType)
{
    const QString path
        = file(QStringLiteral("blank-%1-%2-%3.png").arg(sizeName(size)).arg(depth).arg(colourType));
    QFile out(path);
    const QByteArray bytes = TestSupport::blankPng(size, depth, colourType);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size() ? path : QString();
}

QString BigPages::make()
{
    if (tried)
        return error;
    tried = true;
    for (const char* tool : { "cjpeg", "pnmtile" }) {
        if (BenchCompat::findExecutable(QString::fromLatin1(tool)).isEmpty())
            return error = QStringLiteral("%1 is not installed (Debian packages "
                                          "libjpeg-turbo-progs and netpbm)")
                               .arg(QLatin1String(tool));
    }
    if (!dir.isValid() || !QDir().mkpath(file(QStringLiteral("books"))))
        return error = QStringLiteral("no temporary folder");
    firstPage = TestSupport::encode(TestSupport::makePage(30, 40), "PNG");

    const struct
    {
        const char* kind;
        QSize size;
        bool budget;
        bool mustShow;
    } planned[] = {
        { "jpeg", QSize(4096, 4096), true, true },
        { "jpeg", QSize(3300, 5080), true, true },
        { "png1", QSize(20000, 20000), false, false },
        { "png1", QSize(30000, 30000), false, false },
        { "grey", QSize(12000, 12000), false, false },
        { "jpeg", QSize(12000, 9000), false, true },
        { "jpeg", QSize(6000, 8000), false, true },
        { "strip", QSize(800, 20000), false, true },
    };
    for (const auto& page : planned) {
        const QString kind = QLatin1String(page.kind);
        QString source;
        if (kind == QLatin1String("jpeg"))
            source = blankJpeg(page.size);
        else if (kind == QLatin1String("png1"))
            source = blankPng(page.size, 1);
        else if (kind == QLatin1String("grey"))
            source = blankPng(page.size, 8);
        else
            source = blankPng(page.size, 8, 2);
        const QString key = kind + QLatin1Char('_') + sizeName(page.size);
        const QString made = source.isEmpty() ? QString() : book(key, source);
        if (made.isEmpty())
            return error = QStringLiteral("the page %1 could not be made").arg(key);
        pages << Page { key, page.budget, page.mustShow, made };
    }

    // The ordinary page and the same page tiled to 12000 x 9000.
    const Workload& workload = program->workload();
    const QString pixels = file(QStringLiteral("ordinary.ppm"));
    const QString ordinary = file(QStringLiteral("ordinary.jpg"));
    const QString big = file(QStringLiteral("tiled.jpg"));
    const QString quality = QString::number(workload.quality);
    if (!ComicPagePainter(1).page(workload.pageSize).save(pixels, "PPM")
        || !ChildProcess::run({ "cjpeg", "-quality", quality, "-outfile", ordinary, pixels }).ok()
        || !ChildProcess::run({ "sh", "-c",
                                  "pnmtile 12000 9000 \"$1\" | cjpeg -quality $2 "
                                  "-outfile \"$3\"",
                                  "sh", pixels, quality, big })
                .ok())
        return error = QStringLiteral("the ordinary or the tiled page could not be encoded");
    ordinaryBook = book(QStringLiteral("ordinary"), ordinary);
    bigJpegBook = book(QStringLiteral("tiled_12000x9000"), big);
    if (ordinaryBook.isEmpty() || bigJpegBook.isEmpty())
        return error = QStringLiteral("the ordinary or the tiled book could not be written");

    const ChildProcess::Result import = ChildProcess::run({ BenchProgram::binDir() + "/tamber",
        "--library", file(QStringLiteral("library.sqlite")), "import", file("books") });
    if (!import.ok())
        return error
            = QStringLiteral("tamber import failed: ") + QString::fromLocal8Bit(import.errors);
    return error;
}

ChildProcess::Result BigPages::render(const QString& book, const QStringList& options) const
{
    // PPM, so that no image encoder is in the time.
    return ChildProcess::run(
        QStringList { BenchProgram::binDir() + "/tamber", "--library",
            file(QStringLiteral("library.sqlite")), "render", book, "--page", "2" }
        + options + QStringList { "-o", file(QStringLiteral("shown.ppm")) });
}

BigPages* bigPages = nullptr;

bool ready(benchmark::State& state)
{
    const QString error = bigPages->make();
    if (error.isEmpty())
        return true;
    state.SkipWithError(error.toLocal8Bit().constData());
    return false;
}

void peaks(benchmark::State& state, const View& view)
{
    if (!ready(state))
        return;
    const QStringList options { "--zoom", view.zoom, "--orientation", view.orientation };
    QMap<QString, QVector<double>> mib;
    for (auto _ : state) {
        double seconds = 0;
        for (const Page& page : bigPages->pages) {
            const ChildProcess::Result shown = bigPages->render(page.book, options);
            // A refused page ends with status 1; a crash or a killed
            // process is a failure whatever the page.
            if (!shown.ok() && (page.mustShow || !shown.started || shown.exitCode != 1)) {
                const QByteArray why
                    = page.key.toLatin1() + ": tamber render failed: " + shown.errors;
                state.SkipWithError(why.constData());
                return;
            }
            seconds += shown.seconds;
            mib[page.key] << shown.peakKiB / 1024.0;
        }
        state.SetIterationTime(seconds);
    }
    double budget = 0;
    double worst = 0;
    for (const Page& page : bigPages->pages) {
        const double peak = PairedSamples::median(mib.value(page.key));
        const char* prefix = page.budget ? "budget_mib/" : "peak_mib/";
        state.counters[prefix + page.key.toStdString()] = peak;
        if (page.budget)
            budget = qMax(budget, peak);
        else
            worst = qMax(worst, peak);
    }
    state.counters["budget_mib"] = budget;
    state.counters["worst_mib"] = worst;
    state.counters["ratio"] = budget > 0 ? worst / budget : 0.0;
}

void showBigJpeg(benchmark::State& state)
{
    if (!ready(state))
        return;
    PairedSamples samples;
    QVector<double> bigPeaks;
    QVector<double> ordinaryPeaks;
    int pair = 0;
    for (auto _ : state) {
        ChildProcess::Result big;
        ChildProcess::Result ordinary;
        PairedSamples::inTurns(
            pair++, [&] { big = bigPages->render(bigPages->bigJpegBook, {}); },
            [&] { ordinary = bigPages->render(bigPages->ordinaryBook, {}); });
        if (!big.ok() || !ordinary.ok()) {
            const QByteArray why = "tamber render failed: " + big.errors + ordinary.errors;
            state.SkipWithError(why.constData());
            return;
        }
        state.SetIterationTime(big.seconds);
        samples.add(big.seconds, ordinary.seconds);
        bigPeaks << big.peakKiB / 1024.0;
        ordinaryPeaks << ordinary.peakKiB / 1024.0;
    }
    samples.report(state);
    state.counters["big_peak_mib"] = PairedSamples::median(bigPeaks);
    state.counters["ordinary_peak_mib"] = PairedSamples::median(ordinaryPeaks);
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
    BigPages pages;
    bigPages = &pages;

    const bool smoke = bench.isSmoke();
    for (const View& view : views) {
        benchmark::RegisterBenchmark((std::string("bigpages/") + view.name).c_str(),
            [&view](benchmark::State& state) { peaks(state, view); })
            ->Iterations(smoke ? 1 : 3)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RegisterBenchmark("bigpages/show_big_jpeg", showBigJpeg)
        ->Iterations(smoke ? 2 : 21)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    return bench.run();
}
