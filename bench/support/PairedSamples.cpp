// SPDX-License-Identifier: MIT
#include "PairedSamples.h"

#include <benchmark/benchmark.h>

#include <algorithm>

void PairedSamples::add(double ours, double reference)
{
    oursSeconds << ours;
    referenceSeconds << reference;
}

double PairedSamples::oursMedian() const
{
    return median(oursSeconds);
}

double PairedSamples::referenceMedian() const
{
    return median(referenceSeconds);
}

double PairedSamples::ratio() const
{
    QVector<double> ratios;
    for (int i = 0; i < oursSeconds.size(); ++i) {
        if (referenceSeconds.at(i) > 0)
            ratios << oursSeconds.at(i) / referenceSeconds.at(i);
    }
    return median(ratios);
}

void PairedSamples::report(benchmark::State& state) const
{
    state.counters["ours_ms"] = oursMedian() * 1e3;
    state.counters["reference_ms"] = referenceMedian() * 1e3;
    state.counters["ratio"] = ratio();
    state.counters["samples"] = oursSeconds.size();
}

double PairedSamples::median(QVector<double> values)
{
    if (values.isEmpty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}
