// SPDX-License-Identifier: MIT
#include "PerformanceReport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>
#include <QPair>

#include <functional>

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

// A cell that could not be filled: the benchmark did not run or failed.
bool failed(const QJsonObject& benchmark, PerformanceReport::Cell* cell)
{
    if (benchmark.isEmpty()) {
        cell->verdict = QStringLiteral("not run");
        return true;
    }
    if (benchmark.value(QStringLiteral("error_occurred")).toBool()) {
        cell->verdict = QStringLiteral("error: ")
            + benchmark.value(QStringLiteral("error_message")).toString();
        return true;
    }
    return false;
}

// A count of instructions, every digit: the counts are exact.
QString instructions(double count)
{
    return QLocale(QLocale::English).toString(qint64(count)) + QStringLiteral(" instructions");
}

using CellFiller = std::function<PerformanceReport::Cell(const QJsonObject&)>;

// A cell of two times and the ratio of their medians, with a goal on it (0: none).
CellFiller timed(double goal)
{
    return [goal](const QJsonObject& result) {
        PerformanceReport::Cell cell;
        if (!failed(result, &cell)) {
            cell.ours = milliseconds(counter(result, "ours_ms"));
            cell.reference = milliseconds(counter(result, "reference_ms"));
            cell.ratio = times(counter(result, "ratio"));
            cell.verdict
                = goal > 0 ? verdict(counter(result, "ratio"), goal) : QStringLiteral("reported");
        }
        return cell;
    };
}

// Reading a book through in one view: peak against baseline plus three
// decoded pages, and the growth from page 10 to the last.
PerformanceReport::Cell reading(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    const double growth = counter(result, "growth_mib");
    const double ratio = counter(result, "ratio");
    cell.ours = QStringLiteral("peak %1, growth %2")
                    .arg(mebibytes(counter(result, "peak_mib")), mebibytes(growth));
    cell.reference = QStringLiteral("baseline %1 + 3 decoded pages = %2")
                         .arg(mebibytes(counter(result, "baseline_mib")),
                             mebibytes(counter(result, "limit_mib")));
    cell.ratio = times(ratio);
    QStringList misses;
    if (ratio > 1.0)
        misses << QStringLiteral("peak ") + verdict(ratio, 1.0);
    if (growth > 2.0)
        misses << QStringLiteral("growth missed by %1").arg(mebibytes(growth - 2.0));
    cell.verdict = misses.isEmpty() ? QStringLiteral("met") : misses.join(QLatin1String("; "));
    return cell;
}

// How much longer page 1 of the big book may take than the small book's,
// beyond its longer listing, as a share of the small book's: room for noise.
const double openAllowance = 0.1;

PerformanceReport::Cell bigBookOpen(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    const double small = counter(result, "reference_ms");
    const double beyond = counter(result, "beyond_listing_ms");
    cell.ours = QStringLiteral("page 1 in %1 (listing %2)")
                    .arg(milliseconds(counter(result, "ours_ms")),
                        milliseconds(counter(result, "big_list_ms")));
    cell.reference = QStringLiteral("small book's in %1 (listing %2)")
                         .arg(milliseconds(small), milliseconds(counter(result, "small_list_ms")));
    cell.ratio = QStringLiteral("%1, beyond the listings %2")
                     .arg(times(counter(result, "ratio")), milliseconds(beyond));
    cell.verdict = beyond <= openAllowance * small
        ? QStringLiteral("met")
        : QStringLiteral("missed by %1").arg(milliseconds(beyond - openAllowance * small));
    return cell;
}

PerformanceReport::Cell largeImage(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    cell.ours
        = QStringLiteral("%1, %2 (%3 × %4 pixels)")
              .arg(milliseconds(counter(result, "ours_ms")), mebibytes(counter(result, "ours_mib")))
              .arg(counter(result, "width"))
              .arg(counter(result, "height"));
    cell.reference = QStringLiteral("full decode: %1, %2")
                         .arg(milliseconds(counter(result, "reference_ms")),
                             mebibytes(counter(result, "reference_mib")));
    cell.ratio = QStringLiteral("memory %1, time %2")
                     .arg(times(counter(result, "memory_ratio")), times(counter(result, "ratio")));
    cell.verdict = verdict(counter(result, "memory_ratio"), 0.25);
    return cell;
}

// A page of bench_bigpages as its counter names it ("png1_20000x20000"): its
// size and kind.
QString bigPageName(const QString& key)
{
    static const QMap<QString, QString> kinds {
        { QStringLiteral("png1"), QStringLiteral("PNG, 1 bit") },
        { QStringLiteral("grey"), QStringLiteral("grey PNG") },
        { QStringLiteral("jpeg"), QStringLiteral("JPEG") },
        { QStringLiteral("strip"), QStringLiteral("RGB PNG strip") },
    };
    const int split = key.indexOf(QLatin1Char('_'));
    const QString size = key.mid(split + 1).replace(QLatin1Char('x'), QStringLiteral(" × "));
    return size + QLatin1Char(' ') + kinds.value(key.left(split), key.left(split));
}

// The costliest page among the counters that start with prefix, as "peak (page)".
QString costliestPage(const QJsonObject& result, const QString& prefix)
{
    QString key;
    double peak = -1;
    for (auto it = result.constBegin(); it != result.constEnd(); ++it) {
        if (it.key().startsWith(prefix) && it.value().toDouble() > peak) {
            key = it.key().mid(prefix.size());
            peak = it.value().toDouble();
        }
    }
    return key.isEmpty() ? QString()
                         : QStringLiteral("%1 (%2)").arg(mebibytes(peak), bigPageName(key));
}

// No page over the budget may cost more than the costlier page of the budget
// at the same zoom and orientation, plus 15 %.
const double bigPageGoal = 1.15;

PerformanceReport::Cell bigPagePeaks(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    cell.ours = QStringLiteral("worst ") + costliestPage(result, QStringLiteral("peak_mib/"));
    cell.reference
        = QStringLiteral("costlier ") + costliestPage(result, QStringLiteral("budget_mib/"));
    cell.ratio = times(counter(result, "ratio"));
    cell.verdict = verdict(counter(result, "ratio"), bigPageGoal);
    return cell;
}

// bench_solid's pages: 1, the middle one and the last, by their counters'
// slots.
const char* const solidSlots[] = { "p1", "pmid", "plast" };

QStringList solidPageNames(const QJsonObject& result)
{
    const int pages = int(counter(result, "pages"));
    return { QStringLiteral("page 1"), QStringLiteral("page %1").arg((pages - 1) / 2 + 1),
        QStringLiteral("page %1").arg(pages) };
}

// Each slot's figure with the unit, from the counter named slot + suffix.
QStringList solidFigures(
    const QJsonObject& result, const QString& suffix, const std::function<QString(double)>& format)
{
    QStringList figures;
    for (const char* slot : solidSlots)
        figures << format(result.value(QLatin1String(slot) + suffix).toDouble());
    return figures;
}

// The solid book's pages against the same pages of the ZIP, in time.
PerformanceReport::Cell solidPages(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    const QStringList names = solidPageNames(result);
    const QStringList ours = solidFigures(result, QStringLiteral("_ms"), milliseconds);
    for (int i = 0; i < names.size(); ++i)
        cell.ours += (i ? QStringLiteral(", ") : QString()) + names.at(i) + ' ' + ours.at(i);
    cell.reference = QStringLiteral("ZIP ")
        + solidFigures(result, QStringLiteral("_zip_ms"), milliseconds).join(QStringLiteral(", "));
    cell.ratio = solidFigures(result, QStringLiteral("_ratio"), times).join(QStringLiteral(", "));
    cell.verdict = QStringLiteral("reported");
    return cell;
}

// The workload's comic as a solid 7z, each page once: without the cache,
// from it once filled, and page 1 on an empty cache with the time its filler
// took to keep the book.
PerformanceReport::Cell solidWorkloadBook(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    const QStringList names = solidPageNames(result);
    QStringList before, after, zip, ratios;
    for (int i = 0; i < names.size(); ++i) {
        const QString slot = QLatin1String(solidSlots[i]);
        auto value = [&](const char* suffix) {
            return result.value(slot + QLatin1String(suffix)).toDouble();
        };
        before << names.at(i) + QLatin1Char(' ')
                + (value("_before_over_wait") > 0 ? QStringLiteral("over the 30 s wait")
                                                  : milliseconds(value("_before_ms")));
        after << milliseconds(value("_after_ms"));
        zip << milliseconds(value("_after_zip_ms"));
        ratios << times(value("_after_ms") / value("_after_zip_ms"));
    }
    cell.ours
        = QStringLiteral("without the cache %1; from it %2; page 1 on an empty cache %3, "
                         "the book kept in %4 s")
              .arg(before.join(QStringLiteral(", ")), after.join(QStringLiteral(", ")),
                  milliseconds(counter(result, "p1_first_ms")), figure(counter(result, "fill_s")));
    cell.reference = QStringLiteral("ZIP ") + zip.join(QStringLiteral(", "));
    cell.ratio = QStringLiteral("from the cache ") + ratios.join(QStringLiteral(", "));
    cell.verdict = QStringLiteral("reported");
    return cell;
}

// After the first page, no page of the solid book may cost more than 1.5
// times the same page from the ZIP.
const double solidGoal = 1.5;

PerformanceReport::Cell solidAfterFirstPage(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (failed(result, &cell))
        return cell;
    const double worst = counter(result, "worst_ratio_after_p1");
    cell.ours = QStringLiteral("worst page %1; 95th percentile %2, median %3")
                    .arg(counter(result, "worst_page"))
                    .arg(times(counter(result, "p95_ratio_after_p1")),
                        times(counter(result, "median_ratio_after_p1")));
    cell.reference = QStringLiteral("the same page from the ZIP");
    cell.ratio = times(worst);
    cell.verdict = verdict(worst, solidGoal);
    return cell;
}

// Millions of instructions, for figures that differ a thousandfold.
QString megaInstructions(double count)
{
    return figure(count / 1e6) + QStringLiteral(" M");
}

// The solid book's page turns on ARM, without the extractor's cache
// ("before") or from it ("after"), against the ZIP's, in instructions; the
// pages after the first from the cache are judged.
CellFiller armSolidPages(const QString& kind)
{
    return [kind](const QJsonObject& result) {
        PerformanceReport::Cell cell;
        if (result.isEmpty()) {
            cell.verdict = QStringLiteral("not counted: the device's Qt only");
            return cell;
        }
        if (result.value(QStringLiteral("error_occurred")).toBool()) {
            cell.verdict = result.value(QStringLiteral("error_message")).toString();
            return cell;
        }
        const QStringList names = solidPageNames(result);
        const QStringList ours = solidFigures(result, QLatin1Char('_') + kind, megaInstructions);
        for (int i = 0; i < names.size(); ++i)
            cell.ours += (i ? QStringLiteral(", ") : QString()) + names.at(i) + ' ' + ours.at(i);
        cell.ours += QStringLiteral(" instructions");
        cell.reference = QStringLiteral("ZIP ")
            + solidFigures(result, QStringLiteral("_zip"), megaInstructions)
                  .join(QStringLiteral(", "));
        cell.ratio = solidFigures(result, QLatin1Char('_') + kind + QStringLiteral("_ratio"), times)
                         .join(QStringLiteral(", "));
        cell.verdict = kind == QLatin1String("after")
            ? verdict(counter(result, "worst_ratio_after_p1"), solidGoal)
            : QStringLiteral("reported");
        return cell;
    };
}

const double pageTurnGoal = 1.05;

PerformanceReport::Cell armInstructions(const QJsonObject& result)
{
    PerformanceReport::Cell cell;
    if (result.isEmpty()) {
        cell.verdict = QStringLiteral("not counted: the device's Qt only");
        return cell;
    }
    cell.ours = instructions(counter(result, "ours")) + QStringLiteral(" a turn");
    cell.reference = instructions(counter(result, "reference")) + QStringLiteral(" a page");
    cell.ratio = QString::number(counter(result, "ratio"), 'f', 4) + QStringLiteral(" ×");
    cell.verdict = verdict(counter(result, "ratio"), pageTurnGoal);
    return cell;
}

// A page's decode in another format against the same page in JPEG on the
// same core, on ARM, with a goal on the ratio (0: none).
CellFiller armDecodeInstructions(double goal)
{
    return [goal](const QJsonObject& result) {
        PerformanceReport::Cell cell;
        if (result.isEmpty()) {
            cell.verdict = QStringLiteral("not counted: the device's Qt only");
            return cell;
        }
        if (result.value(QStringLiteral("error_occurred")).toBool()) {
            cell.verdict = result.value(QStringLiteral("error_message")).toString();
            return cell;
        }
        cell.ours = instructions(counter(result, "ours")) + QStringLiteral(" a page");
        cell.reference = instructions(counter(result, "reference")) + QStringLiteral(" (JPEG)");
        cell.ratio = times(counter(result, "ratio"));
        cell.verdict
            = goal > 0 ? verdict(counter(result, "ratio"), goal) : QStringLiteral("reported");
        return cell;
    };
}

// A JPEG XL page may cost at most 3 times the JPEG page on a Cortex-A7, the
// core of recent e-readers.
const double jxlCortexA7Goal = 3.0;

// Whether a row's verdict rests on wall times, which other work on the
// machine moves; counts of instructions and of memory it does not.
enum Measure { Counted, Timed };

struct RowSpec
{
    QString workload;
    QString goal;
    QString benchmark;
    CellFiller fill;
    Measure measure;
};

const QString baselineSteps = QStringLiteral(
    "the baseline steps on the same page (inflate, full decode, smooth scale, draw)");

QList<RowSpec> rowSpecs()
{
    return {
        { QStringLiteral("page turn: `goToNextPage` + synchronous paint vs ") + baselineSteps,
            QStringLiteral("≤ 1.05 ×"), QStringLiteral("view/page_turn"), timed(pageTurnGoal),
            Timed },
        { QStringLiteral("the same on the device's ARM (under `qemu-arm`): instructions of a "
                         "turn vs of the baseline steps, counted by QEMU's `insn` plug-in"),
            QStringLiteral("≤ 1.05 ×"), QStringLiteral("arm/page_turn_instructions"),
            armInstructions, Counted },
        { QStringLiteral("page on screen, whole process: `tamber render` vs `mutool draw`, both "
                         "writing PPM"),
            QStringLiteral("report"), QStringLiteral("process/render_page_ppm"), timed(0), Timed },
        { QStringLiteral("the same, both writing PNG"), QStringLiteral("report"),
            QStringLiteral("process/render_page_png"), timed(0), Timed },
        { QStringLiteral("pan at zoom 2.0: one repaint after a drag vs copying one screen of "
                         "pixels"),
            QStringLiteral("≤ 3 ×"), QStringLiteral("view/pan_zoom2"), timed(3.0), Timed },
        { QStringLiteral("parse of a comic of 5,000 entries, all signals vs `zipinfo -1`, whole "
                         "process"),
            QStringLiteral("≤ 2 ×"), QStringLiteral("library/parse_entries"), timed(2.0), Timed },
        { QStringLiteral("import of 200 books (10,000 pages): `tamber import`, one process vs "
                         "the plug-in's `parse` alone"),
            QStringLiteral("report"), QStringLiteral("library/import_folder"), timed(0), Timed },
        { QStringLiteral("memory while reading all pages of the comic in one view: peak RSS, and "
                         "its growth from page 10 to the last"),
            QStringLiteral("peak within; growth ≤ 2 MiB"), QStringLiteral("view/reading_memory"),
            reading, Counted },
        { QStringLiteral("the big book (2,000 pages, over 2 GiB) read to its end in one view: "
                         "peak RSS, and its growth from page 10 to the last"),
            QStringLiteral("peak within; growth ≤ 2 MiB"), QStringLiteral("view/big_book_memory"),
            reading, Counted },
        { QStringLiteral("the big book's page 1 on screen (a stored book, a new view) vs the "
                         "same page 1 in a book of the big book's first 10 pages, each beside "
                         "the time to list its entries (its page records and the file's names)"),
            QStringLiteral("no longer beyond the longer listing (%1 % of the small book's page 1 "
                           "allowed for noise)")
                .arg(int(openAllowance * 100)),
            QStringLiteral("view/big_book_open"), bigBookOpen, Timed },
        { QStringLiteral("a 12000 × 9000 JPEG through the single-image archive: time and peak "
                         "memory of the decode"),
            QStringLiteral("memory ≤ 0.25 ×"), QStringLiteral("archive/large_image"), largeImage,
            Counted },
        { QStringLiteral("peak memory of `tamber render` showing the costliest page over the "
                         "budget at zoom 1 upright (the second page of a CBZ: 20000 × 20000 and "
                         "30000 × 30000 PNGs of 1 bit, a 12000 × 12000 grey PNG, 12000 × 9000 "
                         "and 6000 × 8000 JPEGs, an 800 × 20000 strip) vs the costlier page of "
                         "the budget (4096 × 4096 and 3300 × 5080 JPEGs)"),
            QStringLiteral("≤ 1.15 ×"), QStringLiteral("bigpages/peak_zoom1_upright"), bigPagePeaks,
            Counted },
        { QStringLiteral("the same at zoom 3 in landscape"), QStringLiteral("≤ 1.15 ×"),
            QStringLiteral("bigpages/peak_zoom3_landscape"), bigPagePeaks, Counted },
        { QStringLiteral("a 12000 × 9000 JPEG page on screen (the ordinary page tiled), whole "
                         "process: `tamber render` vs the same of the ordinary 1988 × 3056 "
                         "page"),
            QStringLiteral("report"), QStringLiteral("bigpages/show_big_jpeg"), timed(0), Timed },
        { QStringLiteral("a page through the RAR extractor (shared RAR 5 sample) vs the same page "
                         "from the ZIP sample"),
            QStringLiteral("report"), QStringLiteral("archive/rar_page"), timed(0), Timed },
        { QStringLiteral("a 300-page solid 7z comic (LZMA2, one block; pages of the comic's "
                         "size as JPEG, page 1 within 200 KB) through the extractor without its "
                         "cache, every page decompressing those before it: pages 1, 150 and "
                         "300 vs the same pages of the book as ZIP"),
            QStringLiteral("report"), QStringLiteral("solid/without_cache"), solidPages, Timed },
        { QStringLiteral("the same book read from the first page to the last with the "
                         "extractor's cache, empty at page 1"),
            QStringLiteral("report"), QStringLiteral("solid/with_cache"), solidPages, Timed },
        { QStringLiteral("the same reading: every page after the first vs the same page from "
                         "the ZIP, the worst, the 95th percentile and the median ratio"),
            QStringLiteral("≤ 1.5 ×"), QStringLiteral("solid/with_cache"), solidAfterFirstPage,
            Timed },
        { QStringLiteral("the workload's comic as a solid 7z (LZMA2, one block): pages 1, 150 "
                         "and 300 without the extractor's cache, then from it once filled, vs "
                         "the ZIP; page 1 on an empty cache, and the time its filler takes to "
                         "keep the book"),
            QStringLiteral("report"), QStringLiteral("solid/workload_book"), solidWorkloadBook,
            Timed },
        { QStringLiteral("the solid book on the device's ARM (under `qemu-arm`) without the "
                         "extractor's cache: instructions of a page turn, the extractor's run "
                         "and the decode, vs the ZIP's page read in the process"),
            QStringLiteral("report"), QStringLiteral("arm/solid_page_instructions"),
            armSolidPages(QStringLiteral("before")), Counted },
        { QStringLiteral("the same from the extractor's cache, once filled: pages after the "
                         "first vs the ZIP's"),
            QStringLiteral("≤ 1.5 ×"), QStringLiteral("arm/solid_page_instructions"),
            armSolidPages(QStringLiteral("after")), Counted },
        { QStringLiteral("a lossy WebP page of the comic's size: `QImageReader` with our image "
                         "plug-in vs the decode time `dwebp -v` reports"),
            QStringLiteral("≤ 1.1 ×"), QStringLiteral("webp/decode_page"), timed(1.1), Timed },
        // avifdec reports no time of its own, and its run does more than the
        // decode: no goal can be judged on it.
        { QStringLiteral("an AVIF page of the comic's size (`avifenc -s 8`, 4:2:0, default "
                         "quality): `QImageReader` with our image plug-in vs the wall time of "
                         "`avifdec --jobs 1` writing Y4M less that of `avifdec --version`; not "
                         "like for like, as avifdec's time also reads the file and writes the "
                         "Y4M"),
            QStringLiteral("report"), QStringLiteral("avif/decode_page"), timed(0), Timed },
        { QStringLiteral("a JPEG XL page of the comic's size (`cjxl -d 1`): `QImageReader` with "
                         "our image plug-in vs the decode time `djxl --num_threads=1` reports"),
            QStringLiteral("≤ 1.1 ×"), QStringLiteral("jxl/decode_page"), timed(1.1), Timed },
        { QStringLiteral("page turn in a comic of WebP pages (the comic's first 4 pages encoded, "
                         "repeated) vs ")
                + baselineSteps,
            QStringLiteral("report"), QStringLiteral("webp/page_turn"), timed(0), Timed },
        { QStringLiteral("the same in a comic of AVIF pages"), QStringLiteral("report"),
            QStringLiteral("avif/page_turn"), timed(0), Timed },
        { QStringLiteral("the same in a comic of JPEG XL pages"), QStringLiteral("report"),
            QStringLiteral("jxl/page_turn"), timed(0), Timed },
        { QStringLiteral("instructions of decoding the comic's page 1 made AVIF (`avifenc -s 8`, "
                         "4:2:0) through our image plug-in on the device's ARM (under "
                         "`qemu-arm`) vs decoding the same page in JPEG"),
            QStringLiteral("report"), QStringLiteral("arm/decode_avif_instructions"),
            armDecodeInstructions(0), Counted },
        { QStringLiteral("the same, the page made JPEG XL (`cjxl -d 1`)"), QStringLiteral("report"),
            QStringLiteral("arm/decode_jxl_instructions"), armDecodeInstructions(0), Counted },
        // Each core's JPEG XL and AVIF page against the JPEG page on that core.
        { QStringLiteral("the JPEG XL page on an emulated Cortex-A7 (`qemu-arm -cpu cortex-a7`: "
                         "NEON and VFPv4, so highway's NEON code) vs the JPEG page on the same "
                         "core"),
            QStringLiteral("≤ 3 ×"), QStringLiteral("arm/decode_jxl_cortex-a7_instructions"),
            armDecodeInstructions(jxlCortexA7Goal), Counted },
        { QStringLiteral("the JPEG XL page on a Cortex-A9 (NEON without VFPv4, so highway's "
                         "portable code) vs the JPEG page on the same core"),
            QStringLiteral("report"), QStringLiteral("arm/decode_jxl_cortex-a9_instructions"),
            armDecodeInstructions(0), Counted },
        { QStringLiteral("the AVIF page on a Cortex-A7 vs the JPEG page on the same core"),
            QStringLiteral("report"), QStringLiteral("arm/decode_avif_cortex-a7_instructions"),
            armDecodeInstructions(0), Counted },
        { QStringLiteral("the AVIF page on a Cortex-A9 vs the JPEG page on the same core"),
            QStringLiteral("report"), QStringLiteral("arm/decode_avif_cortex-a9_instructions"),
            armDecodeInstructions(0), Counted },
    };
}

} // namespace

bool PerformanceReport::load(const QString& label, const QString& resultsDir, QString* error)
{
    Run run;
    run.label = label;
    const QDir dir(resultsDir);
    const QStringList files = dir.entryList({ QStringLiteral("*.json") }, QDir::Files, QDir::Name);
    for (const QString& name : files) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("%1: cannot read").arg(file.fileName());
            return false;
        }
        const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
        // The run is dated by the first benchmark program that ran.
        const QJsonObject context = json.value(QStringLiteral("context")).toObject();
        const QString date = context.value(QStringLiteral("date")).toString();
        const bool fromBenchmark = context.contains(QStringLiteral("num_cpus"));
        if (fromBenchmark
            && (run.context.isEmpty()
                || date < run.context.value(QStringLiteral("date")).toString()))
            run.context = context;
        const QString program = QFileInfo(name).completeBaseName();
        for (const QJsonValue& value : json.value(QStringLiteral("benchmarks")).toArray()) {
            QJsonObject benchmark = value.toObject();
            benchmark.insert(QStringLiteral("program"), program);
            run.benchmarks << benchmark;
        }
    }
    const QDir loads(dir.filePath(QStringLiteral("load")));
    for (const QString& name :
        loads.entryList({ QStringLiteral("*.json") }, QDir::Files, QDir::Name)) {
        QFile file(loads.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("%1: cannot read").arg(file.fileName());
            return false;
        }
        const QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
        run.loads.insert(record.value(QStringLiteral("program")).toString(), record);
    }
    if (run.benchmarks.isEmpty()) {
        *error = QStringLiteral("%1: no benchmark results").arg(resultsDir);
        return false;
    }
    runs << run;
    return true;
}

QStringList PerformanceReport::labels() const
{
    QStringList labels;
    for (const Run& run : runs)
        labels << run.label;
    return labels;
}

QJsonObject PerformanceReport::benchmark(const Run& run, const QString& prefix)
{
    for (const QJsonObject& benchmark : run.benchmarks) {
        if (benchmark.value(QStringLiteral("name")).toString().startsWith(prefix))
            return benchmark;
    }
    return QJsonObject();
}

QList<PerformanceReport::Row> PerformanceReport::rows() const
{
    QList<Row> rows;
    for (const RowSpec& planned : rowSpecs()) {
        Row row { planned.workload, planned.goal, {} };
        for (const Run& run : runs) {
            const QJsonObject result = benchmark(run, planned.benchmark);
            Cell cell = planned.fill(result);
            const bool judged = cell.verdict == QLatin1String("met")
                || cell.verdict.startsWith(QLatin1String("missed"));
            if (planned.measure == Timed && judged) {
                const QString reason
                    = busyReason(run, result.value(QStringLiteral("program")).toString());
                if (!reason.isEmpty())
                    cell.verdict = QStringLiteral("no verdict: ") + reason;
            }
            row.cells << cell;
        }
        rows << row;
    }
    return rows;
}

double PerformanceReport::memoryLimit(int run) const
{
    return run < runs.size()
        ? counter(benchmark(runs.at(run), QStringLiteral("view/reading_memory")), "limit_mib")
        : 0.0;
}

QString PerformanceReport::text() const
{
    QStringList lines;
    for (const Row& row : rows()) {
        QString workload = row.workload;
        workload.remove(QLatin1Char('`'));
        lines << workload + QStringLiteral(" (goal: ") + row.goal + QLatin1Char(')');
        for (int i = 0; i < row.cells.size(); ++i) {
            const Cell& cell = row.cells.at(i);
            lines << QStringLiteral("    %1: ours %2 | reference %3 | ratio %4 | %5")
                         .arg(
                             runs.at(i).label, cell.ours, cell.reference, cell.ratio, cell.verdict);
        }
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QString PerformanceReport::context(const Run& run)
{
    const QJsonObject& context = run.context;
    const QString date = context.value(QStringLiteral("date")).toString();
    const int cpus = context.value(QStringLiteral("num_cpus")).toInt();
    const int mhz = context.value(QStringLiteral("mhz_per_cpu")).toInt();
    return QStringLiteral("%1: run of %2 on %3 CPUs at %4 MHz.")
        .arg(run.label, date)
        .arg(cpus)
        .arg(mhz);
}

QString PerformanceReport::busyReason(const Run& run, const QString& program)
{
    const QJsonObject record = run.loads.value(program);
    if (record.isEmpty())
        return QStringLiteral("the load of the run was not recorded");
    if (record.value(QStringLiteral("accepted")).toBool())
        return QString();
    return QStringLiteral("other work took %1 of %2 cores during the run (limit %3)")
        .arg(QString::number(record.value(QStringLiteral("other_during")).toDouble(), 'f', 2))
        .arg(record.value(QStringLiteral("cores")).toInt())
        .arg(QString::number(record.value(QStringLiteral("limit")).toDouble(), 'f', 2));
}

QString PerformanceReport::loadTable() const
{
    QJsonObject any;
    QStringList programs;
    for (const Run& run : runs) {
        for (auto it = run.loads.constBegin(); it != run.loads.constEnd(); ++it) {
            any = it.value();
            if (!programs.contains(it.key()))
                programs << it.key();
        }
    }
    if (programs.isEmpty())
        return QStringLiteral("No run's load was recorded (the programs were not run by "
                              "`scripts/bench`), so no verdict on a time is given.\n\n");
    programs.sort();
    QString table = QStringLiteral(
        "The load of each program's run: the other work on the machine while it ran, in cores "
        "(the machine's busy CPU time, less the program's own and its children's, over its "
        "wall time), then the kernel's 1-minute load average at its start and at its end. A "
        "verdict on times (\"met\", \"missed\") stands only for a run whose other work stayed "
        "within a quarter of the cores (%1 of %2): `scripts/bench` waits for a quiet machine "
        "before each program, runs a busier one again, up to %3 times in all, and otherwise "
        "keeps its least busy run, whose timed rows then say \"no verdict\". Counts of "
        "instructions and of memory are judged whatever the load.\n\n")
                        .arg(QString::number(any.value(QStringLiteral("limit")).toDouble(), 'f', 2))
                        .arg(any.value(QStringLiteral("cores")).toInt())
                        .arg(any.value(QStringLiteral("attempts")).toInt());
    table += QStringLiteral("| program |");
    QString rule = QStringLiteral("|---|");
    for (const Run& run : runs) {
        table += QStringLiteral(" %1 |").arg(run.label);
        rule += QStringLiteral("---|");
    }
    table += QLatin1Char('\n') + rule + QLatin1Char('\n');
    for (const QString& program : programs) {
        table += QStringLiteral("| `%1` |").arg(program);
        for (const Run& run : runs) {
            const QJsonObject record = run.loads.value(program);
            if (record.isEmpty()) {
                table += QStringLiteral(" not recorded |");
                continue;
            }
            auto value = [&record](const char* key) {
                return QString::number(record.value(QLatin1String(key)).toDouble(), 'f', 2);
            };
            table += QStringLiteral(" other work %1 cores; load average %2 → %3; %4 s, run %5 of "
                                    "%6, %7 |")
                         .arg(value("other_during"), value("load_average_start"),
                             value("load_average_end"),
                             QString::number(
                                 record.value(QStringLiteral("wall_s")).toDouble(), 'f', 0))
                         .arg(record.value(QStringLiteral("attempt")).toInt())
                         .arg(record.value(QStringLiteral("attempts")).toInt())
                         .arg(record.value(QStringLiteral("accepted")).toBool()
                                 ? QStringLiteral("quiet")
                                 : QStringLiteral("**busy: no verdict on its times**"));
        }
        table += QLatin1Char('\n');
    }
    return table + QLatin1Char('\n');
}

QString PerformanceReport::stepsTable() const
{
    QString table;
    table += QStringLiteral("\nWhere a page turn's time goes: the baseline steps timed one by one "
                            "on the same pages (medians), and each one's share of the decode:\n\n");
    table += QStringLiteral("| step |");
    QString rule = QStringLiteral("|---|");
    for (const Run& run : runs) {
        table += QStringLiteral(" %1 | × decode |").arg(run.label);
        rule += QStringLiteral("---|---|");
    }
    table += QLatin1Char('\n') + rule + QLatin1Char('\n');
    const QList<QPair<QString, const char*>> steps = {
        { QStringLiteral("reading the entry (libzip inflates it)"), "inflate_ms" },
        { QStringLiteral("decoding it in full (`QImage::loadFromData`)"), "decode_ms" },
        { QStringLiteral("smooth scale to fit 1072 × 1448"), "scale_ms" },
        { QStringLiteral("filling and drawing the screen"), "draw_ms" },
        { QStringLiteral("*instead of the decode and the scale: decoding straight to the "
                         "fitted size (ruled out by the design)*"),
            "decode_at_size_ms" },
    };
    for (const auto& step : steps) {
        table += QStringLiteral("| %1 |").arg(step.first);
        for (const Run& run : runs) {
            const QJsonObject result = benchmark(run, QStringLiteral("view/page_turn_steps"));
            const double decode = counter(result, "decode_ms");
            const double value = counter(result, step.second);
            if (result.isEmpty() || result.value(QStringLiteral("error_occurred")).toBool())
                table += QStringLiteral(" not run | |");
            else
                table += QStringLiteral(" %1 | %2 |")
                             .arg(milliseconds(value),
                                 decode > 0 ? times(value / decode) : QString());
        }
        table += QLatin1Char('\n');
    }
    return table;
}

QString PerformanceReport::markdown(const QString& workloadSummary, const QString& notes) const
{
    QStringList contexts;
    for (const Run& run : runs)
        contexts << context(run);
    QString page;
    page += QStringLiteral("# Performance\n\n");
    page += QStringLiteral(
        "Written by `scripts/bench` from its runs' results and `bench/performance-notes.md`: "
        "edit those, not this page. %1 Every figure is a median of pairs in which ours and the "
        "reference were measured in turns in the same run, and every ratio is the median of "
        "the pairs' ratios, ours over the reference.\n\n")
                .arg(contexts.join(QLatin1Char(' ')));
    page += workloadSummary + QStringLiteral("\n\n");
    page += loadTable();
    page += QStringLiteral("| workload | goal |");
    QString rule = QStringLiteral("|---|---|");
    for (const Run& run : runs) {
        page += QStringLiteral(" %1: ours vs reference | %1: ratio, result |").arg(run.label);
        rule += QStringLiteral("---|---|");
    }
    page += QLatin1Char('\n') + rule + QLatin1Char('\n');
    for (const Row& row : rows()) {
        page += QStringLiteral("| %1 | %2 |").arg(row.workload, row.goal);
        for (const Cell& cell : row.cells) {
            const QString versus = cell.ours.isEmpty()
                ? QString()
                : QStringLiteral("%1 vs %2").arg(cell.ours, cell.reference);
            const QString result = cell.ratio.isEmpty()
                ? cell.verdict
                : QStringLiteral("%1, %2").arg(cell.ratio, cell.verdict);
            page += QStringLiteral(" %1 | %2 |").arg(versus, result);
        }
        page += QLatin1Char('\n');
    }
    page += stepsTable();
    page += QStringLiteral("\n![Time of each page turn and of its baseline steps, and the "
                           "resident set while reading, on each Qt](performance.png)\n\n");
    page += notes;
    return page;
}
