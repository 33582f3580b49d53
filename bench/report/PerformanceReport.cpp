#include "PerformanceReport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPair>

namespace {

QString figure(double value)
{
    const int decimals = value >= 100 ? 0 : value >= 10 ? 1 : value >= 1 ? 2 : 3;
    return QString::number(value, 'f', decimals);
}

QString milliseconds(double value)
{
    return figure(value) + QStringLiteral(" ms");
}

QString mebibytes(double value)
{
    return figure(value) + QStringLiteral(" MiB");
}

QString times(double ratio)
{
    return QString::number(ratio, 'f', 2) + QStringLiteral(" ×");
}

// "met", or by how much the ratio exceeds the goal.
QString verdict(double ratio, double goal)
{
    if (ratio <= goal)
        return QStringLiteral("met");
    return QStringLiteral("missed by %1 %").arg(QString::number((ratio / goal - 1) * 100, 'f', 0));
}

double counter(const QJsonObject& benchmark, const char* name)
{
    return benchmark.value(QLatin1String(name)).toDouble();
}

// A row that could not be filled: the benchmark did not run or failed.
bool failed(const QJsonObject& benchmark, PerformanceReport::Row* row)
{
    if (benchmark.isEmpty()) {
        row->verdict = QStringLiteral("not run");
        return true;
    }
    if (benchmark.value(QStringLiteral("error_occurred")).toBool()) {
        row->verdict = QStringLiteral("error: ")
            + benchmark.value(QStringLiteral("error_message")).toString();
        return true;
    }
    return false;
}

} // namespace

bool PerformanceReport::load(const QString& resultsDir, QString* error)
{
    const QDir dir(resultsDir);
    const QStringList files = dir.entryList({ QStringLiteral("*.json") }, QDir::Files, QDir::Name);
    for (const QString& name : files) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("%1: cannot read").arg(file.fileName());
            return false;
        }
        const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
        // The run is dated by the first program that ran.
        const QJsonObject context = json.value(QStringLiteral("context")).toObject();
        const QString date = context.value(QStringLiteral("date")).toString();
        if (runContext.isEmpty() || date < runContext.value(QStringLiteral("date")).toString())
            runContext = context;
        for (const QJsonValue& value : json.value(QStringLiteral("benchmarks")).toArray())
            benchmarks << value.toObject();
    }
    if (benchmarks.isEmpty()) {
        *error = QStringLiteral("%1: no benchmark results").arg(resultsDir);
        return false;
    }
    return true;
}

QJsonObject PerformanceReport::benchmark(const QString& prefix) const
{
    for (const QJsonObject& benchmark : benchmarks) {
        if (benchmark.value(QStringLiteral("name")).toString().startsWith(prefix))
            return benchmark;
    }
    return QJsonObject();
}

QList<PerformanceReport::Row> PerformanceReport::rows() const
{
    QList<Row> rows;
    // A row of two times and the ratio of their medians, with a goal on it.
    auto timed
        = [&](const QString& workload, const QString& name, double goal, const QString& goalText) {
              Row row { workload, {}, {}, {}, goalText, {} };
              const QJsonObject result = benchmark(name);
              if (!failed(result, &row)) {
                  row.ours = milliseconds(counter(result, "ours_ms"));
                  row.reference = milliseconds(counter(result, "reference_ms"));
                  row.ratio = times(counter(result, "ratio"));
                  row.verdict = goal > 0 ? verdict(counter(result, "ratio"), goal)
                                         : QStringLiteral("reported");
              }
              rows << row;
          };

    timed(QStringLiteral("page turn: `goToNextPage` + synchronous paint vs `QImage::loadFromData` "
                         "of the page's bytes"),
        QStringLiteral("view/page_turn"), 1.2, QStringLiteral("≤ 1.2 ×"));
    timed(QStringLiteral("page on screen, whole process: `tamber render` vs `mutool draw`, both "
                         "writing PPM"),
        QStringLiteral("process/render_page_ppm"), 0.8, QStringLiteral("≤ 0.8 ×"));
    timed(QStringLiteral("the same, both writing PNG"), QStringLiteral("process/render_page_png"),
        0, QStringLiteral("report"));
    timed(QStringLiteral("pan at zoom 2.0: one repaint after a drag vs copying one screen of "
                         "pixels"),
        QStringLiteral("view/pan_zoom2"), 3.0, QStringLiteral("≤ 3 ×"));
    timed(QStringLiteral("parse of a comic of 5,000 entries, all signals vs `zipinfo -1`, whole "
                         "process"),
        QStringLiteral("library/parse_entries"), 2.0, QStringLiteral("≤ 2 ×"));
    timed(QStringLiteral("import of 200 books (10,000 pages): `tamber import`, one process vs "
                         "the plug-in's `parse` alone"),
        QStringLiteral("library/import_folder"), 1.5, QStringLiteral("≤ 1.5 ×"));

    {
        Row row { QStringLiteral("memory while reading all pages in one view: peak RSS, and its "
                                 "growth from page 10 to the last"),
            {}, {}, {}, QStringLiteral("peak within; growth ≤ 2 MiB"), {} };
        const QJsonObject result = benchmark(QStringLiteral("view/reading_memory"));
        if (!failed(result, &row)) {
            const double growth = counter(result, "growth_mib");
            const double ratio = counter(result, "ratio");
            row.ours = QStringLiteral("peak %1, growth %2")
                           .arg(mebibytes(counter(result, "peak_mib")), mebibytes(growth));
            row.reference = QStringLiteral("baseline %1 + 3 decoded pages = %2")
                                .arg(mebibytes(counter(result, "baseline_mib")),
                                    mebibytes(counter(result, "limit_mib")));
            row.ratio = times(ratio);
            QStringList misses;
            if (ratio > 1.0)
                misses << QStringLiteral("peak ") + verdict(ratio, 1.0);
            if (growth > 2.0)
                misses << QStringLiteral("growth missed by %1").arg(mebibytes(growth - 2.0));
            row.verdict
                = misses.isEmpty() ? QStringLiteral("met") : misses.join(QLatin1String("; "));
        }
        rows << row;
    }
    {
        Row row { QStringLiteral("a 12000 × 9000 JPEG through the single-image archive: time and "
                                 "peak memory of the decode"),
            {}, {}, {}, QStringLiteral("memory ≤ 0.25 ×"), {} };
        const QJsonObject result = benchmark(QStringLiteral("archive/large_image"));
        if (!failed(result, &row)) {
            row.ours = QStringLiteral("%1, %2 (%3 × %4 pixels)")
                           .arg(milliseconds(counter(result, "ours_ms")),
                               mebibytes(counter(result, "ours_mib")))
                           .arg(counter(result, "width"))
                           .arg(counter(result, "height"));
            row.reference = QStringLiteral("full decode: %1, %2")
                                .arg(milliseconds(counter(result, "reference_ms")),
                                    mebibytes(counter(result, "reference_mib")));
            row.ratio
                = QStringLiteral("memory %1, time %2")
                      .arg(times(counter(result, "memory_ratio")), times(counter(result, "ratio")));
            row.verdict = verdict(counter(result, "memory_ratio"), 0.25);
        }
        rows << row;
    }
    timed(QStringLiteral("a page through the RAR extractor (shared RAR 5 sample) vs the same page "
                         "from the ZIP sample"),
        QStringLiteral("archive/rar_page"), 0, QStringLiteral("report"));
    timed(QStringLiteral("a lossy WebP page of the comic's size: `QImageReader` with our image "
                         "plug-in vs the decode time `dwebp -v` reports"),
        QStringLiteral("webp/decode_page"), 1.1, QStringLiteral("≤ 1.1 ×"));
    return rows;
}

double PerformanceReport::memoryLimit() const
{
    return counter(benchmark(QStringLiteral("view/reading_memory")), "limit_mib");
}

QString PerformanceReport::text() const
{
    const QList<Row> all = rows();
    QStringList lines;
    for (const Row& row : all) {
        QString workload = row.workload;
        workload.remove(QLatin1Char('`'));
        lines << workload;
        lines << QStringLiteral("    ours %1 | reference %2 | ratio %3 | goal %4 | %5")
                     .arg(row.ours, row.reference, row.ratio, row.goal, row.verdict);
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QString PerformanceReport::context() const
{
    const QString date = runContext.value(QStringLiteral("date")).toString();
    const int cpus = runContext.value(QStringLiteral("num_cpus")).toInt();
    const int mhz = runContext.value(QStringLiteral("mhz_per_cpu")).toInt();
    const QJsonArray load = runContext.value(QStringLiteral("load_avg")).toArray();
    // Other work on the machine shows in the absolute figures more than in the ratios.
    const QString loadText = load.isEmpty()
        ? QString()
        : QStringLiteral(", load average %1 at the start")
              .arg(QString::number(load.first().toDouble(), 'f', 1));
    return QStringLiteral("Run of %1 on %2 CPUs at %3 MHz%4.")
        .arg(date)
        .arg(cpus)
        .arg(mhz)
        .arg(loadText);
}

QString PerformanceReport::markdown(const QString& workloadSummary, const QString& notes) const
{
    QString page;
    page += QStringLiteral("# Performance\n\n");
    page += QStringLiteral(
        "Written by `scripts/bench` from a run's results and `bench/performance-notes.md`: edit "
        "those, not this page. %1 Every figure is a median, and every ratio is ours over the "
        "reference, both measured in turns in the same run.\n\n")
                .arg(context());
    page += workloadSummary + QStringLiteral("\n\n");
    page += QStringLiteral("| workload | ours | reference | ratio | goal | result |\n");
    page += QStringLiteral("|---|---|---|---|---|---|\n");
    for (const Row& row : rows())
        page += QStringLiteral("| %1 | %2 | %3 | %4 | %5 | %6 |\n")
                    .arg(row.workload, row.ours, row.reference, row.ratio, row.goal, row.verdict);
    const QJsonObject steps = benchmark(QStringLiteral("view/page_turn_steps"));
    if (!steps.isEmpty() && !steps.value(QStringLiteral("error_occurred")).toBool()) {
        const double decode = counter(steps, "decode_ms");
        auto share
            = [decode](double value) { return decode > 0 ? times(value / decode) : QString(); };
        page += QStringLiteral("\nWhere a page turn's time goes (the paint's steps timed one by "
                               "one on the same pages, medians; share of the decode):\n\n");
        page += QStringLiteral("| step | time | × decode |\n|---|---|---|\n");
        const QList<QPair<QString, const char*>> rows = {
            { QStringLiteral("reading the entry (libzip inflates it)"), "inflate_ms" },
            { QStringLiteral("decoding it in full (`QImage::loadFromData`)"), "decode_ms" },
            { QStringLiteral("smooth scale to fit 1072 × 1448"), "scale_ms" },
            { QStringLiteral("filling and drawing the screen"), "draw_ms" },
            { QStringLiteral("*instead of the decode and the scale: decoding straight to the "
                             "fitted size*"),
                "decode_at_size_ms" },
        };
        for (const auto& row : rows)
            page += QStringLiteral("| %1 | %2 | %3 |\n")
                        .arg(row.first, milliseconds(counter(steps, row.second)),
                            share(counter(steps, row.second)));
    }
    page += QStringLiteral("\n![Time of each page turn, and the resident set while reading]"
                           "(performance.png)\n\n");
    page += notes;
    return page;
}
