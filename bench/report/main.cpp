// bench-report --results=DIR --workload=DIR --notes=FILE --docs=DIR
// Prints the table of a run's figures and writes DIR/performance.md (the table,
// then the notes) and DIR/performance.png (per-page times and memory).

#include "PageTimesPlot.h"
#include "PerformanceReport.h"
#include "Workload.h"

#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QLocale>

#include <cstdio>

namespace {

QString workloadSummary(const Workload& workload)
{
    const QLocale english(QLocale::English);
    return QStringLiteral(
        "Workload (made by `bench-workload`, the same files on every run): a comic of %1 JPEG "
        "pages of %2 × %3 pixels at quality %4 (flat panels, ink lines, lettering, halftone), "
        "deflated in a ZIP as archivers make them, read on a %5 screen; a comic of %6 entries; "
        "%7 books of %8 pages in all; a %9 JPEG.")
        .arg(workload.comicPages)
        .arg(workload.pageSize.width())
        .arg(workload.pageSize.height())
        .arg(workload.quality)
        .arg(QStringLiteral("1072 × 1448"))
        .arg(english.toString(workload.entries))
        .arg(workload.books)
        .arg(english.toString(workload.libraryPages))
        .arg(QStringLiteral("%1 × %2")
                 .arg(workload.largeSize.width())
                 .arg(workload.largeSize.height()));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption results(
        QStringLiteral("results"), QStringLiteral("Results folder."), QStringLiteral("DIR"));
    const QCommandLineOption workloadDir(
        QStringLiteral("workload"), QStringLiteral("Workload folder."), QStringLiteral("DIR"));
    const QCommandLineOption notes(QStringLiteral("notes"),
        QStringLiteral("Markdown appended to the page."), QStringLiteral("FILE"));
    const QCommandLineOption docs(
        QStringLiteral("docs"), QStringLiteral("Output folder."), QStringLiteral("DIR"));
    parser.addOptions({ results, workloadDir, notes, docs });
    parser.process(application);

    QString error;
    PerformanceReport report;
    Workload workload;
    if (!report.load(parser.value(results), &error)
        || !Workload::load(parser.value(workloadDir), &workload, &error)) {
        std::fprintf(stderr, "bench-report: %s\n", qPrintable(error));
        return 1;
    }
    std::fputs(qPrintable(report.text()), stdout);
    if (!parser.isSet(docs))
        return 0;

    QFile notesFile(parser.value(notes));
    const QString notesText
        = notesFile.open(QIODevice::ReadOnly) ? QString::fromUtf8(notesFile.readAll()) : QString();
    QFile page(parser.value(docs) + QStringLiteral("/performance.md"));
    if (!page.open(QIODevice::WriteOnly)
        || page.write(report.markdown(workloadSummary(workload), notesText).toUtf8()) < 0) {
        std::fprintf(stderr, "bench-report: %s: cannot write\n", qPrintable(page.fileName()));
        return 1;
    }

    PageTimesPlot plot;
    plot.loadTimes(parser.value(results) + QStringLiteral("/pages.csv"));
    plot.loadMemory(parser.value(results) + QStringLiteral("/memory.csv"));
    plot.setMemoryLimit(report.memoryLimit());
    const QString png = parser.value(docs) + QStringLiteral("/performance.png");
    if (!plot.image(QSize(1200, 900)).save(png)) {
        std::fprintf(stderr, "bench-report: %s: cannot write\n", qPrintable(png));
        return 1;
    }
    return 0;
}
