// SPDX-License-Identifier: MIT
// bench-report --results=DIR [--device-results=DIR] --workload=DIR --notes=FILE --docs=DIR
// Prints the table of the runs' figures (the desktop's Qt, and the device's
// when given) and writes DIR/performance.md (the table, then the notes) and
// DIR/performance.png (per-page times and memory).

#include "PageTimesPlot.h"
#include "PerformanceReport.h"
#include "Workload.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
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
        "%7 books of %8 pages in all; a %9 JPEG; and, in the full workload, a big book of %10 "
        "pages of the comic's kind at quality %11, deflated, of %12.")
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
                 .arg(workload.largeSize.height()))
        .arg(english.toString(workload.bigBookPages))
        .arg(workload.bigBookQuality)
        .arg(QStringLiteral("%1 GiB").arg(
            QString::number(QFileInfo(workload.bigBook()).size() / double(1 << 30), 'f', 2)));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption results(
        QStringLiteral("results"), QStringLiteral("Results folder."), QStringLiteral("DIR"));
    const QCommandLineOption deviceResults(QStringLiteral("device-results"),
        QStringLiteral("Results folder of the device's Qt."), QStringLiteral("DIR"));
    const QCommandLineOption workloadDir(
        QStringLiteral("workload"), QStringLiteral("Workload folder."), QStringLiteral("DIR"));
    const QCommandLineOption notes(QStringLiteral("notes"),
        QStringLiteral("Markdown appended to the page."), QStringLiteral("FILE"));
    const QCommandLineOption docs(
        QStringLiteral("docs"), QStringLiteral("Output folder."), QStringLiteral("DIR"));
    parser.addOptions({ results, deviceResults, workloadDir, notes, docs });
    parser.process(application);

    QString error;
    PerformanceReport report;
    Workload workload;
    if (!report.load(QStringLiteral("Qt 5.15 (desktop)"), parser.value(results), &error)
        || (parser.isSet(deviceResults)
            && !report.load(QStringLiteral("Qt 4.8 (device's, x86_64)"),
                parser.value(deviceResults), &error))
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
    QStringList folders { parser.value(results) };
    if (parser.isSet(deviceResults))
        folders << parser.value(deviceResults);
    for (int run = 0; run < folders.size(); ++run) {
        const QString label = run == 0 ? QStringLiteral("Qt 5") : QStringLiteral("Qt 4");
        plot.loadTimes(label, folders.at(run) + QStringLiteral("/pages.csv"));
        plot.loadMemory(label, folders.at(run) + QStringLiteral("/memory.csv"),
            report.memoryLimit(run));
    }
    const QString png = parser.value(docs) + QStringLiteral("/performance.png");
    if (!plot.image(QSize(1200, 900)).save(png)) {
        std::fprintf(stderr, "bench-report: %s: cannot write\n", qPrintable(png));
        return 1;
    }
    return 0;
}
