// SPDX-License-Identifier: MIT
// The work whose instructions scripts/bench-instructions counts under QEMU:
// page turns in the reading view, or the mandated steps of showing the same
// pages, after the same setup. A run that only sets up gives what the
// counts of the other two have in common.
//
//   bench-count --workload=DIR --work=setup|turn|steps [--pages=N]
//
// Setup: the comic imported, a view of the screen's size opened on page 1
// and painted, and the comic opened for the steps, page 1 shown by them
// too. Then N pages from page 2 on, each turned to and painted, or each
// inflated, decoded, scaled and drawn.

#include "BenchEnvironment.h"
#include "BenchLibrary.h"
#include "ComicsReader.h"
#include "MandatedSteps.h"
#include "QtCompat.h"
#include "ReaderWindow.h"
#include "Workload.h"

#include <QStringList>

#include <cstdio>

namespace {

const QSize screen(1072, 1448);

QString option(const QStringList& arguments, const QString& name)
{
    const QString prefix = QStringLiteral("--") + name + QLatin1Char('=');
    for (const QString& argument : arguments) {
        if (argument.startsWith(prefix))
            return argument.mid(prefix.size());
    }
    return QString();
}

} // namespace

int main(int argc, char** argv)
{
    BenchEnvironment::prepare();
    const std::unique_ptr<QApplication> application
        = BenchEnvironment::makeApplication(argc, argv);
    if (!application)
        return 2;
    const QStringList arguments = QCoreApplication::arguments();
    const QString work = option(arguments, QStringLiteral("work"));
    const int pages = qMax(1, option(arguments, QStringLiteral("pages")).toInt());
    Workload workload;
    QString error;
    if (!Workload::load(option(arguments, QStringLiteral("workload")), &workload, &error)) {
        std::fprintf(stderr, "bench-count: %s\n", qPrintable(error));
        return 2;
    }
    if (work != QLatin1String("setup") && work != QLatin1String("turn")
        && work != QLatin1String("steps")) {
        std::fprintf(stderr, "bench-count: --work=setup|turn|steps\n");
        return 2;
    }
    if (pages >= workload.comicPages) {
        std::fprintf(stderr, "bench-count: the comic has %d pages\n", workload.comicPages);
        return 2;
    }

    BenchLibrary library;
    const Volume book = library.import(workload.comic());
    if (book.getId().isEmpty()) {
        std::fprintf(stderr, "bench-count: the comic could not be imported\n");
        return 1;
    }
    ReaderWindow window(screen);
    window.open(book);
    MandatedSteps steps(workload.comic(), screen);
    if (window.renderedPage() != 0 || !steps.show(Workload::pageName(0))) {
        std::fprintf(stderr, "bench-count: page 1 was not shown\n");
        return 1;
    }

    for (int page = 1; page <= pages && work != QLatin1String("setup"); ++page) {
        if (work == QLatin1String("turn")) {
            window.view()->goToNextPage();
            window.paint();
            if (window.renderedPage() != page) {
                std::fprintf(stderr, "bench-count: the view did not paint page %d\n", page + 1);
                return 1;
            }
        } else if (!steps.show(Workload::pageName(page))) {
            std::fprintf(stderr, "bench-count: page %d did not decode\n", page + 1);
            return 1;
        }
    }
    std::printf("%s %d\n", qPrintable(work), work == QLatin1String("setup") ? 0 : pages);
    return 0;
}
