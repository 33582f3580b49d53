// SPDX-License-Identifier: MIT
#ifndef PAGETURNS_H
#define PAGETURNS_H

#include "PairedSamples.h"

#include <QSize>
#include <QString>

#include <benchmark/benchmark.h>

// Page turns in the reading view against the steps that showing the same
// page must take at least (BaselineSteps: inflate, full decode, smooth scale,
// draw), as bench_view and bench_pageformats time them.
namespace PageTurns {

// Turn and steps in turns free and take page-sized blocks alternately, which
// glibc then maps afresh each time: some 4,000 page faults a pair, felt by
// both sides at random and worth several percent of a turn. Freed blocks are
// kept for reuse instead, as a process reading page after page keeps them.
void keepLargeBlocks();

// Imports the comic, opens it at the screen's size, then for each iteration
// turns to the next page and paints it, against the steps on the same page,
// in turns. False, with the state's error set, when either side failed.
bool time(
    benchmark::State& state, const QString& comic, const QSize& screen, PairedSamples& samples);

} // namespace PageTurns

#endif
