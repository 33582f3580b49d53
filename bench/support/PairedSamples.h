// SPDX-License-Identifier: MIT
#ifndef PAIREDSAMPLES_H
#define PAIREDSAMPLES_H

#include <QVector>

#include <chrono>

namespace benchmark {
class State;
}

// Times of ours and of the reference, taken in turns within one run, so that
// whatever else the machine does falls on both alike. Figures are medians;
// the ratio is the median of the pairs' ratios. A pair is the same work done
// both ways at the same moment, while the work may differ from pair to pair
// (a comic's pages): the median of each side alone can then land on
// different pages, and a ratio of the two medians compares unlike work.
class PairedSamples
{
public:
    void add(double oursSeconds, double referenceSeconds);

    double oursMedian() const;
    double referenceMedian() const;
    double ratio() const;
    const QVector<double>& ours() const { return oursSeconds; }
    const QVector<double>& reference() const { return referenceSeconds; }

    // Sets the counters ours_ms, reference_ms, ratio and samples.
    void report(benchmark::State& state) const;

    static double median(QVector<double> values);
    // The wall time that work takes, in seconds.
    template<typename Work> static double seconds(Work work)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    // Which of the two goes first in a pair: alternately, so that neither
    // always finds the caches warmed by the other.
    static bool oursFirst(int pair) { return pair % 2 == 0; }
    // Runs both, in the order that pair calls for.
    template<typename Ours, typename Reference>
    static void inTurns(int pair, Ours&& ours, Reference&& reference)
    {
        if (oursFirst(pair)) {
            ours();
            reference();
        } else {
            reference();
            ours();
        }
    }

private:
    QVector<double> oursSeconds;
    QVector<double> referenceSeconds;
};

#endif
