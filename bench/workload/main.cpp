// SPDX-License-Identifier: MIT
// bench-workload [--smoke] DIR: makes the benchmarks' files in DIR, unless the
// manifest there says they are already made for the same plan.

#include "BenchCompat.h"
#include "Display.h"
#include "Workload.h"
#include "WorkloadGenerator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>

int main(int argc, char** argv)
{
    // Painting on images needs QtGui, not a display of the user's.
    if (!Display::prepare(QStringLiteral("bench-workload"), false))
        return 2;
    const std::unique_ptr<QApplication> application = Display::makeApplication(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const bool smoke = arguments.removeAll(QStringLiteral("--smoke")) > 0;
    if (arguments.size() != 1) {
        std::fprintf(stderr, "usage: bench-workload [--smoke] DIR\n");
        return 2;
    }

    const Workload plan
        = Workload::planned(smoke ? Workload::Smoke : Workload::Full, arguments.first());
    Workload existing;
    QString error;
    if (Workload::load(plan.dir, &existing, &error) && existing.sameAs(plan)) {
        std::printf("workload in %s is up to date\n", qPrintable(plan.dir));
        return 0;
    }

    QElapsedTimer timer;
    timer.start();
    if (!WorkloadGenerator(plan).run(&error)) {
        std::fprintf(stderr, "bench-workload: %s\n", qPrintable(error));
        return 1;
    }
    std::printf("workload made in %s in %.1f s\n", qPrintable(plan.dir), timer.elapsed() / 1000.0);
    return 0;
}
