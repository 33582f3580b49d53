// SPDX-License-Identifier: MIT
#include "PageTurns.h"

#include "BaselineSteps.h"
#include "BenchLibrary.h"
#include "ComicsReader.h"
#include "ReaderWindow.h"
#include "Workload.h"

#include <malloc.h>

namespace PageTurns {

void keepLargeBlocks()
{
    mallopt(M_MMAP_THRESHOLD, 64 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
}

bool time(
    benchmark::State& state, const QString& comic, const QSize& screen, PairedSamples& samples)
{
    BenchLibrary library;
    const Volume book = library.import(comic);
    if (book.getId().isEmpty()) {
        state.SkipWithError("the comic could not be imported");
        return false;
    }
    BaselineSteps steps(comic, screen);
    ReaderWindow window(screen);
    window.open(book);
    // The view has shown page 1; so do the steps, so that neither side's
    // first timed page is the first its memory and caches see.
    if (!steps.show(Workload::pageName(0))) {
        state.SkipWithError("the steps did not show page 1");
        return false;
    }

    int page = 0;
    for (auto _ : state) {
        ++page;
        double ours = 0;
        double reference = 0;
        bool shown = false;
        auto turn = [&] {
            ours = PairedSamples::seconds([&] {
                window.view()->goToNextPage();
                window.paint();
            });
        };
        auto baseline = [&] {
            reference
                = PairedSamples::seconds([&] { shown = steps.show(Workload::pageName(page)); });
        };
        PairedSamples::inTurns(page, turn, baseline);
        if (window.renderedPage() != page || !shown) {
            state.SkipWithError("the view or the steps did not show the next page");
            return false;
        }
        state.SetIterationTime(ours);
        samples.add(ours, reference);
    }
    return true;
}

} // namespace PageTurns
