// SPDX-License-Identifier: MIT
// The parser and the host's import: parsing a comic of many entries against
// listing it with zipinfo, and importing a folder of books with tamber against
// the plug-in's parse of the same files alone.
//
//   bench_library --workload=DIR [benchmark flags]

#include "BenchProgram.h"
#include "ChildProcess.h"
#include "PairedSamples.h"
#include "ParsedBook.h"
#include "TestSupport.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QVector>

#include <benchmark/benchmark.h>

namespace {

BenchProgram* program = nullptr;

// The pages of a parse that a host receives in full, as it keeps them.
int parsedPages(const QString& path)
{
    ParsedBook book;
    ParsedBook::parse(path, &book);
    return book.pages.size();
}

// parse() with all its signals received, against "zipinfo -1" of the same
// file as a whole process.
void parseManyEntries(benchmark::State& state)
{
    const QString comic = program->workload().entriesComic();
    PairedSamples samples;
    int pair = 0;
    int pages = 0;
    for (auto _ : state) {
        double ours = 0;
        ChildProcess::Result listing;
        auto parseComic
            = [&] { ours = PairedSamples::seconds([&] { pages = parsedPages(comic); }); };
        auto list = [&] { listing = ChildProcess::run({ "zipinfo", "-1", comic }); };
        PairedSamples::inTurns(pair++, parseComic, list);
        if (!listing.ok()) {
            state.SkipWithError(("zipinfo failed: " + listing.errors).constData());
            return;
        }
        state.SetIterationTime(ours);
        samples.add(ours, listing.seconds);
    }
    if (pages != program->workload().entryPages()) {
        state.SkipWithError("the parser did not find every page of the comic");
        return;
    }
    samples.report(state);
    state.counters["pages"] = pages;
}

// "tamber import DIR", one process, against the plug-in's parse of the same
// files in this process, without storing anything. Each import goes into an
// empty library that exists already, as a reader's does: making a library is
// once in its life, not part of an import.
void importFolder(benchmark::State& state)
{
    const QString folder = program->workload().libraryDir();
    QStringList files;
    QDirIterator it(folder, { QStringLiteral("*.cbz") }, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next();
    files.sort();
    TestSupport::TemporaryDir dir;
    const QString library = dir.filePath(QStringLiteral("library.sqlite"));
    const QString empty = dir.filePath(QStringLiteral("empty.sqlite"));
    const QString tamber = BenchProgram::binDir() + QStringLiteral("/tamber");
    // A session of no commands makes the library; commands that only read
    // never make one.
    const ChildProcess::Result made
        = ChildProcess::run({ tamber, "--library", empty, "session", "/dev/null" });
    if (!made.ok() || !QFile::exists(empty)) {
        state.SkipWithError(("tamber could not make a library: " + made.errors).constData());
        return;
    }

    PairedSamples samples;
    int pair = 0;
    int pageCount = 0;
    for (auto _ : state) {
        for (const char* suffix : { "", "-wal", "-shm" })
            QFile::remove(library + QLatin1String(suffix));
        QFile::copy(empty, library);
        ChildProcess::Result import;
        double reference = 0;
        auto importBooks = [&] {
            import = ChildProcess::run({ tamber, "--library", library, "import", folder });
        };
        auto parseBooks = [&] {
            reference = PairedSamples::seconds([&] {
                pageCount = 0;
                for (const QString& file : files)
                    pageCount += parsedPages(file);
            });
        };
        PairedSamples::inTurns(pair++, importBooks, parseBooks);
        if (!import.ok()) {
            state.SkipWithError(("tamber import failed: " + import.errors).constData());
            return;
        }
        state.SetIterationTime(import.seconds);
        samples.add(import.seconds, reference);
    }
    if (pageCount != program->workload().libraryPages) {
        state.SkipWithError("the parser did not find every page of the library");
        return;
    }
    samples.report(state);
    state.counters["books"] = files.size();
    state.counters["pages"] = pageCount;
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

    benchmark::RegisterBenchmark("library/parse_entries", parseManyEntries)
        ->Iterations(bench.isSmoke() ? 2 : 30)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("library/import_folder", importFolder)
        ->Iterations(bench.isSmoke() ? 2 : 7)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    return bench.run();
}
