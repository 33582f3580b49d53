// SPDX-License-Identifier: MIT
// A page on screen as a whole process: "tamber render" against the reference
// renderer's "mutool draw" of the same page of the same file at the same size.
// Both write the page as uncompressed pixels (PPM), so that the figure is the
// rendering, not an image encoder; a second run writes PNG, for comparison.
//
//   bench_render --workload=DIR [benchmark flags]

#include "BenchProgram.h"
#include "ChildProcess.h"
#include "PairedSamples.h"
#include "TestSupport.h"

#include <QApplication>

#include <benchmark/benchmark.h>

namespace {

BenchProgram* program = nullptr;
const QString screenSize = QStringLiteral("1072x1448");

void renderPage(benchmark::State& state, const QString& format)
{
    const Workload& workload = program->workload();
    TestSupport::TemporaryDir dir;
    const QString library = dir.filePath(QStringLiteral("library.sqlite"));
    const QString tamber = BenchProgram::binDir() + QStringLiteral("/tamber");
    const ChildProcess::Result import
        = ChildProcess::run({ tamber, "--library", library, "import", workload.comic() });
    if (!import.ok()) {
        state.SkipWithError(("tamber import failed: " + import.errors).constData());
        return;
    }
    const QString ours = dir.filePath(QStringLiteral("ours.") + format);
    const QString reference = dir.filePath(QStringLiteral("reference.") + format);

    PairedSamples samples;
    int pair = 0;
    for (auto _ : state) {
        // Pages from all over the book, the same for both.
        const QString page = QString::number(1 + (pair * 97) % workload.comicPages);
        ChildProcess::Result render;
        ChildProcess::Result draw;
        auto renderOurs = [&] {
            render = ChildProcess::run({ tamber, "--library", library, "render", workload.comic(),
                "--page", page, "--size", screenSize, "-o", ours });
        };
        auto drawReference = [&] {
            draw = ChildProcess::run({ "mutool", "draw", "-w", "1072", "-h", "1448", "-o",
                reference, workload.comic(), page });
        };
        PairedSamples::inTurns(pair++, renderOurs, drawReference);
        if (!render.ok()) {
            state.SkipWithError(("tamber render failed: " + render.errors).constData());
            return;
        }
        if (!draw.ok()) {
            state.SkipWithError(
                ("mutool draw failed (is mupdf-tools installed?): " + draw.errors).constData());
            return;
        }
        state.SetIterationTime(render.seconds);
        samples.add(render.seconds, draw.seconds);
        state.counters["ours_peak_mib"] = render.peakKiB / 1024.0;
        state.counters["reference_peak_mib"] = draw.peakKiB / 1024.0;
    }
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

    for (const char* format : { "ppm", "png" }) {
        benchmark::RegisterBenchmark((QByteArray("process/render_page_") + format).constData(),
            [format](benchmark::State& state) { renderPage(state, QString::fromLatin1(format)); })
            ->Iterations(bench.isSmoke() ? 2 : 21)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    return bench.run();
}
