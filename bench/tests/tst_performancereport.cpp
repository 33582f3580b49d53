// SPDX-License-Identifier: MIT
// The report's table from two runs' results: each Qt's figures land in its
// own column, the goals' verdicts follow the figures, and a verdict on times
// stands only where scripts/bench found the run quiet.

#include "PerformanceReport.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QtTest>

namespace {

enum RunLoad { Quiet, Busy, Unrecorded };

// A results folder holding one benchmark program's output of these
// benchmarks, and, as scripts/bench writes it, the load of its run.
bool writeResults(const QString& dir, const QString& benchmarks, RunLoad load = Quiet)
{
    QFile file(dir + QStringLiteral("/bench_view.json"));
    if (!file.open(QIODevice::WriteOnly)
        || file.write(QStringLiteral("{\"context\": {\"date\": \"2026-01-01T00:00:00\", "
                                     "\"num_cpus\": 2, \"mhz_per_cpu\": 2600, "
                                     "\"load_avg\": [0.5]}, \"benchmarks\": [%1]}")
                          .arg(benchmarks)
                          .toUtf8())
            <= 0)
        return false;
    if (load == Unrecorded)
        return true;
    const QByteArray record = QByteArray("{\"program\": \"bench_view\", \"cores\": 2, "
                                         "\"limit\": 0.50, \"attempt\": 3, \"attempts\": 3, "
                                         "\"accepted\": ")
        + (load == Quiet ? "true" : "false")
        + ", \"other_before\": 0.10, \"other_during\": " + (load == Quiet ? "0.05" : "1.20")
        + ", \"load_average_start\": 0.30, \"load_average_end\": 1.40, \"wall_s\": 95}";
    QFile loadFile(dir + QStringLiteral("/load/bench_view.json"));
    return QDir().mkpath(dir + QStringLiteral("/load")) && loadFile.open(QIODevice::WriteOnly)
        && loadFile.write(record) == record.size();
}

QString pageTurn(double ours, double reference)
{
    return QStringLiteral("{\"name\": \"view/page_turn/iterations:9\", \"ours_ms\": %1, "
                          "\"reference_ms\": %2, \"ratio\": %3}")
        .arg(ours)
        .arg(reference)
        .arg(ours / reference);
}

QString readingMemory(double peak, double limit)
{
    return QStringLiteral("{\"name\": \"view/reading_memory\", \"peak_mib\": %1, "
                          "\"limit_mib\": %2, \"ratio\": %3, \"growth_mib\": 1.0, "
                          "\"baseline_mib\": 30}")
        .arg(peak)
        .arg(limit)
        .arg(peak / limit);
}

QString bigBookOpen(double big, double small, double bigList, double smallList)
{
    return QStringLiteral("{\"name\": \"view/big_book_open\", \"ours_ms\": %1, "
                          "\"reference_ms\": %2, \"ratio\": %3, \"big_list_ms\": %4, "
                          "\"small_list_ms\": %5, \"beyond_listing_ms\": %6}")
        .arg(big)
        .arg(small)
        .arg(big / small)
        .arg(bigList)
        .arg(smallList)
        .arg(big - small - (bigList - smallList));
}

// bench_bigpages's peaks at one zoom: each page's in MiB, and the worst
// page's over the costlier budget page's.
QString bigPagePeaks(double bigJpeg, double strip)
{
    const double worst = qMax(bigJpeg, strip);
    return QStringLiteral("{\"name\": \"bigpages/peak_zoom1_upright/iterations:3/manual_time\", "
                          "\"budget_mib/jpeg_4096x4096\": 70.5, "
                          "\"budget_mib/jpeg_3300x5080\": 75.0, "
                          "\"peak_mib/png1_30000x30000\": 40.0, "
                          "\"peak_mib/jpeg_12000x9000\": %1, \"peak_mib/strip_800x20000\": %2, "
                          "\"budget_mib\": 75.0, \"worst_mib\": %3, \"ratio\": %4}")
        .arg(bigJpeg)
        .arg(strip)
        .arg(worst)
        .arg(worst / 75.0);
}

// bench_solid's runs of a 300-page book: without the cache, then with it,
// whose worst page after the first is worst times its ZIP twin.
QString solidBook(double worst)
{
    return QStringLiteral(
        "{\"name\": \"solid/without_cache/iterations:3/manual_time\", \"pages\": 300, "
        "\"p1_ms\": 29.8, \"p1_zip_ms\": 22.0, \"p1_ratio\": 1.35, \"pmid_ms\": 591, "
        "\"pmid_zip_ms\": 21.5, \"pmid_ratio\": 27.5, \"plast_ms\": 1150, "
        "\"plast_zip_ms\": 22.5, \"plast_ratio\": 51.1}, "
        "{\"name\": \"solid/with_cache/iterations:5/manual_time\", \"pages\": 300, "
        "\"p1_ms\": 52.0, \"p1_zip_ms\": 46.0, \"p1_ratio\": 1.13, \"pmid_ms\": 26.6, "
        "\"pmid_zip_ms\": 21.4, \"pmid_ratio\": 1.24, \"plast_ms\": 29.4, "
        "\"plast_zip_ms\": 22.5, \"plast_ratio\": 1.31, \"worst_ratio_after_p1\": %1, "
        "\"worst_page\": 296, \"p95_ratio_after_p1\": 1.3, \"median_ratio_after_p1\": 1.21}, "
        "{\"name\": \"solid/workload_book/iterations:1/manual_time\", \"pages\": 300, "
        "\"p1_before_ms\": 180, \"pmid_before_ms\": 11200, \"plast_before_ms\": 30010, "
        "\"plast_before_over_wait\": 1, \"p1_first_ms\": 190, \"fill_s\": 20.3, "
        "\"p1_after_ms\": 60, \"p1_after_zip_ms\": 50, \"pmid_after_ms\": 66, "
        "\"pmid_after_zip_ms\": 60, \"plast_after_ms\": 63, \"plast_after_zip_ms\": 60}")
        .arg(worst);
}

// bench-instructions' decodes of page 1: QEMU's default processor first,
// whose JPEG XL page costs far less than the A7's own below, then each
// core's JPEG XL page (A7: a7 × JPEG) and AVIF page against JPEG on that
// core; the A9's AVIF page failed.
QByteArray decodesByCore(double a7)
{
    const double jpeg = 660000000;
    auto row = [jpeg](const char* name, double ratio) {
        return QStringLiteral("{\"name\": \"arm/decode_%1_instructions\", \"decodes\": 2, "
                              "\"ours\": %2, \"reference\": %3, \"ratio\": %4}")
            .arg(QLatin1String(name))
            .arg(qRound64(ratio * jpeg))
            .arg(qint64(jpeg))
            .arg(ratio);
    };
    const QStringList rows { row("jxl", 1.2), row("jxl_cortex-a7", a7), row("jxl_cortex-a9", 12.8),
        row("avif_cortex-a7", 3.1),
        QStringLiteral("{\"name\": \"arm/decode_avif_cortex-a9_instructions\", "
                       "\"error_occurred\": true, \"error_message\": \"not counted: avifenc "
                       "failed\"}") };
    return QStringLiteral("{\"context\": {\"date\": \"2025-01-01T00:00:00\"}, "
                          "\"benchmarks\": [%1]}")
        .arg(rows.join(QStringLiteral(", ")))
        .toUtf8();
}

const PerformanceReport::Row* rowOf(const QList<PerformanceReport::Row>& rows, const char* start)
{
    for (const PerformanceReport::Row& row : rows) {
        if (row.workload.startsWith(QLatin1String(start)))
            return &row;
    }
    return nullptr;
}

} // namespace

class TestPerformanceReport : public QObject
{
    Q_OBJECT

private slots:
    void columnsPerQt();
    void bigBookOpenAllowsOnlyTheListing();
    void armCountsInTheDevicesColumn();
    void decodeCountsByCore();
    void busyRunJudgesNoTimes();
    void bigPagesJudgedByTheCostliestPage();
    void solidBookJudgedAfterTheFirstPage();
};

void TestPerformanceReport::columnsPerQt()
{
    TestSupport::TemporaryDir desktop;
    TestSupport::TemporaryDir device;
    QVERIFY(writeResults(desktop.path(), pageTurn(21.0, 20.0)));
    QVERIFY(writeResults(device.path(), pageTurn(22.0, 20.0)));
    PerformanceReport report;
    QString error;
    QVERIFY2(report.load(QStringLiteral("Qt 5"), desktop.path(), &error), qPrintable(error));
    QVERIFY2(report.load(QStringLiteral("Qt 4"), device.path(), &error), qPrintable(error));
    QCOMPARE(report.labels(), QStringList() << QStringLiteral("Qt 5") << QStringLiteral("Qt 4"));

    const QList<PerformanceReport::Row> rows = report.rows();
    const PerformanceReport::Row* turn = rowOf(rows, "page turn");
    QVERIFY(turn);
    QCOMPARE(turn->cells.size(), 2);
    QCOMPARE(turn->cells.at(0).ours, QStringLiteral("21.0 ms"));
    QCOMPARE(turn->cells.at(0).verdict, QStringLiteral("met"));
    // 1.10 × against a goal of 1.05 ×.
    QCOMPARE(turn->cells.at(1).ours, QStringLiteral("22.0 ms"));
    QCOMPARE(turn->cells.at(1).verdict, QStringLiteral("missed by 5 %"));
    // A benchmark neither run has is said so in both columns.
    const PerformanceReport::Row* pan = rowOf(rows, "pan");
    QVERIFY(pan);
    QCOMPARE(pan->cells.at(0).verdict, QStringLiteral("not run"));

    const QString page = report.markdown(QString(), QString());
    QVERIFY(page.contains(QStringLiteral("Qt 5: ours vs reference")));
    QVERIFY(page.contains(QStringLiteral("| 22.0 ms vs 20.0 ms | 1.10 ×, missed by 5 % |")));
}

void TestPerformanceReport::bigBookOpenAllowsOnlyTheListing()
{
    TestSupport::TemporaryDir within;
    TestSupport::TemporaryDir beyond;
    // 3 ms longer, 2.5 ms of it listing: 0.5 ms beyond, within 10 % of 30 ms.
    QVERIFY(writeResults(within.path(), bigBookOpen(33.0, 30.0, 3.0, 0.5)));
    // 6 ms longer with the same listing: 3.5 ms beyond, over the 3 ms allowed.
    QVERIFY(writeResults(beyond.path(), bigBookOpen(36.0, 30.0, 3.0, 0.5)));
    PerformanceReport report;
    QString error;
    QVERIFY(report.load(QStringLiteral("within"), within.path(), &error));
    QVERIFY(report.load(QStringLiteral("beyond"), beyond.path(), &error));
    const QList<PerformanceReport::Row> rows = report.rows();
    const PerformanceReport::Row* open = rowOf(rows, "the big book's page 1");
    QVERIFY(open);
    QCOMPARE(open->cells.at(0).verdict, QStringLiteral("met"));
    QCOMPARE(open->cells.at(1).verdict, QStringLiteral("missed by 0.500 ms"));
}

void TestPerformanceReport::armCountsInTheDevicesColumn()
{
    TestSupport::TemporaryDir desktop;
    TestSupport::TemporaryDir device;
    QVERIFY(writeResults(desktop.path(), pageTurn(21.0, 20.0)));
    QVERIFY(writeResults(device.path(), pageTurn(21.0, 20.0)));
    // As scripts/bench-instructions writes it: no benchmark context, so the
    // run keeps the benchmark program's date and machine.
    QFile counts(device.filePath(QStringLiteral("arm-instructions.json")));
    QVERIFY(counts.open(QIODevice::WriteOnly));
    counts.write("{\"context\": {\"date\": \"2025-01-01T00:00:00\"}, \"benchmarks\": "
                 "[{\"name\": \"arm/page_turn_instructions\", \"ours\": 300500000, "
                 "\"reference\": 300000000, \"ratio\": 1.001667}, "
                 "{\"name\": \"arm/decode_avif_instructions\", \"error_occurred\": true, "
                 "\"error_message\": \"not counted: the armhf build has no libqavif.so\"}, "
                 "{\"name\": \"arm/decode_jxl_instructions\", \"ours\": 90000000, "
                 "\"reference\": 60000000, \"ratio\": 1.5}]}");
    counts.close();
    PerformanceReport report;
    QString error;
    QVERIFY(report.load(QStringLiteral("Qt 5"), desktop.path(), &error));
    QVERIFY(report.load(QStringLiteral("Qt 4"), device.path(), &error));
    const QList<PerformanceReport::Row> rows = report.rows();
    const PerformanceReport::Row* arm = rowOf(rows, "the same on the device's ARM");
    QVERIFY(arm);
    QVERIFY(arm->cells.at(0).verdict.contains(QStringLiteral("device's Qt only")));
    QCOMPARE(arm->cells.at(1).ours, QStringLiteral("300,500,000 instructions a turn"));
    QCOMPARE(arm->cells.at(1).ratio, QStringLiteral("1.0017 ×"));
    QCOMPARE(arm->cells.at(1).verdict, QStringLiteral("met"));
    // A format the ARM build cannot decode says why, with no figures.
    const PerformanceReport::Row* avif = rowOf(rows, "instructions of decoding");
    QVERIFY(avif);
    QVERIFY(avif->cells.at(1).ours.isEmpty());
    QCOMPARE(avif->cells.at(1).verdict,
        QStringLiteral("not counted: the armhf build has no libqavif.so"));
    const PerformanceReport::Row* jxl = rowOf(rows, "the same, the page made JPEG XL");
    QVERIFY(jxl);
    QCOMPARE(jxl->cells.at(1).ours, QStringLiteral("90,000,000 instructions a page"));
    QCOMPARE(jxl->cells.at(1).reference, QStringLiteral("60,000,000 instructions (JPEG)"));
    QCOMPARE(jxl->cells.at(1).ratio, QStringLiteral("1.50 ×"));
    QVERIFY(report.markdown(QString(), QString()).contains(QStringLiteral("run of 2026-01-01")));
}

void TestPerformanceReport::decodeCountsByCore()
{
    // Two device runs, both busy: counts are judged whatever the load.
    TestSupport::TemporaryDir within;
    TestSupport::TemporaryDir over;
    QVERIFY(writeResults(within.path(), pageTurn(21.0, 20.0), Busy));
    QVERIFY(writeResults(over.path(), pageTurn(21.0, 20.0), Busy));
    for (const auto& run : { qMakePair(within.path(), 2.9), qMakePair(over.path(), 4.121325) }) {
        QFile counts(run.first + QStringLiteral("/arm-instructions.json"));
        QVERIFY(counts.open(QIODevice::WriteOnly));
        QVERIFY(counts.write(decodesByCore(run.second)) > 0);
    }
    PerformanceReport report;
    QString error;
    QVERIFY2(report.load(QStringLiteral("within"), within.path(), &error), qPrintable(error));
    QVERIFY2(report.load(QStringLiteral("over"), over.path(), &error), qPrintable(error));
    const QList<PerformanceReport::Row> rows = report.rows();

    // The A7's own row, not the default processor's, against its goal.
    const PerformanceReport::Row* jxlA7 = rowOf(rows, "the JPEG XL page on an emulated Cortex-A7");
    QVERIFY(jxlA7);
    QCOMPARE(jxlA7->goal, QStringLiteral("≤ 3 ×"));
    QCOMPARE(jxlA7->cells.at(0).ours, QStringLiteral("1,914,000,000 instructions a page"));
    QCOMPARE(jxlA7->cells.at(0).reference, QStringLiteral("660,000,000 instructions (JPEG)"));
    QCOMPARE(jxlA7->cells.at(0).ratio, QStringLiteral("2.90 ×"));
    QCOMPARE(jxlA7->cells.at(0).verdict, QStringLiteral("met"));
    QCOMPARE(jxlA7->cells.at(1).ratio, QStringLiteral("4.12 ×"));
    QCOMPARE(jxlA7->cells.at(1).verdict, QStringLiteral("missed by 37 %"));

    // The A9 and AVIF: figures without a goal, and a failed count's reason.
    const PerformanceReport::Row* jxlA9 = rowOf(rows, "the JPEG XL page on a Cortex-A9");
    QVERIFY(jxlA9);
    QCOMPARE(jxlA9->goal, QStringLiteral("report"));
    QCOMPARE(jxlA9->cells.at(1).ratio, QStringLiteral("12.80 ×"));
    QCOMPARE(jxlA9->cells.at(1).verdict, QStringLiteral("reported"));
    const PerformanceReport::Row* avifA7 = rowOf(rows, "the AVIF page on a Cortex-A7");
    QVERIFY(avifA7);
    QCOMPARE(avifA7->cells.at(1).ours, QStringLiteral("2,046,000,000 instructions a page"));
    QCOMPARE(avifA7->cells.at(1).ratio, QStringLiteral("3.10 ×"));
    QCOMPARE(avifA7->cells.at(1).verdict, QStringLiteral("reported"));
    const PerformanceReport::Row* avifA9 = rowOf(rows, "the AVIF page on a Cortex-A9");
    QVERIFY(avifA9);
    QVERIFY(avifA9->cells.at(1).ours.isEmpty());
    QCOMPARE(avifA9->cells.at(1).verdict, QStringLiteral("not counted: avifenc failed"));

    QVERIFY(report.markdown(QString(), QString())
                .contains(QStringLiteral("| ≤ 3 × | 1,914,000,000 instructions a page vs "
                                         "660,000,000 instructions (JPEG) | 2.90 ×, met | "
                                         "2,720,074,500 instructions a page vs 660,000,000 "
                                         "instructions (JPEG) | 4.12 ×, missed by 37 % |")));
}

void TestPerformanceReport::busyRunJudgesNoTimes()
{
    TestSupport::TemporaryDir busy;
    TestSupport::TemporaryDir unrecorded;
    const QString results = pageTurn(21.0, 20.0) + QLatin1Char(',') + readingMemory(60.0, 100.0)
        + QLatin1Char(',') + bigBookOpen(33.0, 30.0, 3.0, 0.5);
    QVERIFY(writeResults(busy.path(), results, Busy));
    QVERIFY(writeResults(unrecorded.path(), results, Unrecorded));
    PerformanceReport report;
    QString error;
    QVERIFY2(report.load(QStringLiteral("busy"), busy.path(), &error), qPrintable(error));
    QVERIFY2(
        report.load(QStringLiteral("unrecorded"), unrecorded.path(), &error), qPrintable(error));
    const QList<PerformanceReport::Row> rows = report.rows();

    // The figures stay; the verdict on them goes, with the reason.
    const PerformanceReport::Row* turn = rowOf(rows, "page turn");
    QVERIFY(turn);
    QCOMPARE(turn->cells.at(0).ratio, QStringLiteral("1.05 ×"));
    QCOMPARE(turn->cells.at(0).verdict,
        QStringLiteral("no verdict: other work took 1.20 of 2 cores during the run (limit 0.50)"));
    QCOMPARE(turn->cells.at(1).verdict,
        QStringLiteral("no verdict: the load of the run was not recorded"));
    const PerformanceReport::Row* open = rowOf(rows, "the big book's page 1");
    QVERIFY(open);
    QVERIFY(open->cells.at(0).verdict.startsWith(QLatin1String("no verdict")));
    // Memory is judged whatever the load.
    const PerformanceReport::Row* memory = rowOf(rows, "memory while reading");
    QVERIFY(memory);
    QCOMPARE(memory->cells.at(0).verdict, QStringLiteral("met"));
    QCOMPARE(memory->cells.at(1).verdict, QStringLiteral("met"));

    // The page says which run was busy.
    const QString page = report.markdown(QString(), QString());
    QVERIFY(page.contains(QStringLiteral(
        "| `bench_view` | other work 1.20 cores; load average 0.30 → 1.40; 95 s, run 3 of 3, "
        "**busy: no verdict on its times** | not recorded |")));
}

void TestPerformanceReport::bigPagesJudgedByTheCostliestPage()
{
    TestSupport::TemporaryDir within;
    TestSupport::TemporaryDir beyond;
    // 80 MiB against 75 MiB, within 15 %; then a strip of 90 MiB, 20 % over.
    QVERIFY(writeResults(within.path(), bigPagePeaks(80.0, 60.0), Busy));
    QVERIFY(writeResults(beyond.path(), bigPagePeaks(80.0, 90.0)));
    PerformanceReport report;
    QString error;
    QVERIFY(report.load(QStringLiteral("within"), within.path(), &error));
    QVERIFY(report.load(QStringLiteral("beyond"), beyond.path(), &error));
    const QList<PerformanceReport::Row> rows = report.rows();
    const PerformanceReport::Row* upright = rowOf(rows, "peak memory of `tamber render`");
    QVERIFY(upright);
    QCOMPARE(upright->cells.at(0).ours, QStringLiteral("worst 80.0 MiB (12000 × 9000 JPEG)"));
    QCOMPARE(
        upright->cells.at(0).reference, QStringLiteral("costlier 75.0 MiB (3300 × 5080 JPEG)"));
    // Memory: judged though the run was busy.
    QCOMPARE(upright->cells.at(0).verdict, QStringLiteral("met"));
    QCOMPARE(
        upright->cells.at(1).ours, QStringLiteral("worst 90.0 MiB (800 × 20000 RGB PNG strip)"));
    QCOMPARE(upright->cells.at(1).ratio, QStringLiteral("1.20 ×"));
    QCOMPARE(upright->cells.at(1).verdict, QStringLiteral("missed by 4 %"));
    // The other zoom is its own benchmark, which neither run has.
    const PerformanceReport::Row* landscape = rowOf(rows, "the same at zoom 3 in landscape");
    QVERIFY(landscape);
    QCOMPARE(landscape->cells.at(0).verdict, QStringLiteral("not run"));
}

void TestPerformanceReport::solidBookJudgedAfterTheFirstPage()
{
    TestSupport::TemporaryDir desktop;
    TestSupport::TemporaryDir device;
    QVERIFY(writeResults(desktop.path(), solidBook(1.54)));
    QVERIFY(writeResults(device.path(), solidBook(1.45), Busy));
    // The 7z's page 150 from the cache at 1.4 × the ZIP's, page 300 at 1.6 ×.
    QFile counts(device.filePath(QStringLiteral("arm-instructions.json")));
    QVERIFY(counts.open(QIODevice::WriteOnly));
    counts.write("{\"context\": {\"date\": \"2025-01-01T00:00:00\"}, \"benchmarks\": "
                 "[{\"name\": \"arm/solid_page_instructions\", \"pages\": 300, \"mid\": 150, "
                 "\"p1_before\": 60000000, \"p1_after\": 52000000, \"p1_zip\": 40000000, "
                 "\"p1_before_ratio\": 1.5, \"p1_after_ratio\": 1.3, "
                 "\"pmid_before\": 2140000000, \"pmid_after\": 56000000, "
                 "\"pmid_zip\": 40000000, \"pmid_before_ratio\": 53.5, "
                 "\"pmid_after_ratio\": 1.4, \"plast_before\": 4300000000, "
                 "\"plast_after\": 64000000, \"plast_zip\": 40000000, "
                 "\"plast_before_ratio\": 107.5, \"plast_after_ratio\": 1.6, "
                 "\"worst_ratio_after_p1\": 1.6}]}");
    counts.close();
    PerformanceReport report;
    QString error;
    QVERIFY(report.load(QStringLiteral("Qt 5"), desktop.path(), &error));
    QVERIFY(report.load(QStringLiteral("Qt 4"), device.path(), &error));
    const QList<PerformanceReport::Row> rows = report.rows();

    // Without the cache: each page against its twin, reported.
    const PerformanceReport::Row* before = rowOf(rows, "a 300-page solid 7z comic");
    QVERIFY(before);
    QCOMPARE(before->cells.at(0).ours,
        QStringLiteral("page 1 29.8 ms, page 150 591 ms, page 300 1150 ms"));
    QCOMPARE(before->cells.at(0).reference, QStringLiteral("ZIP 22.0 ms, 21.5 ms, 22.5 ms"));
    QCOMPARE(before->cells.at(0).ratio, QStringLiteral("1.35 ×, 27.50 ×, 51.10 ×"));
    QCOMPARE(before->cells.at(0).verdict, QStringLiteral("reported"));
    // The with-cache run is its own benchmark, not the first that starts alike.
    const PerformanceReport::Row* after = rowOf(rows, "the same book read");
    QVERIFY(after);
    QCOMPARE(after->cells.at(0).ours,
        QStringLiteral("page 1 52.0 ms, page 150 26.6 ms, page 300 29.4 ms"));

    // The workload's comic: a page past the plug-in's wait says so.
    const PerformanceReport::Row* workload = rowOf(rows, "the workload's comic as a solid 7z");
    QVERIFY(workload);
    QCOMPARE(workload->cells.at(0).ours,
        QStringLiteral("without the cache page 1 180 ms, page 150 11200 ms, page 300 over the 30 "
                       "s wait; from it 60.0 ms, 66.0 ms, 63.0 ms; page 1 on an empty cache "
                       "190 ms, the book kept in 20.3 s"));
    QCOMPARE(workload->cells.at(0).ratio, QStringLiteral("from the cache 1.20 ×, 1.10 ×, 1.05 ×"));

    // The goal is on the worst page after the first; a busy run's is not judged.
    const PerformanceReport::Row* goal = rowOf(rows, "the same reading: every page");
    QVERIFY(goal);
    QCOMPARE(goal->cells.at(0).ours,
        QStringLiteral("worst page 296; 95th percentile 1.30 ×, median 1.21 ×"));
    QCOMPARE(goal->cells.at(0).ratio, QStringLiteral("1.54 ×"));
    QCOMPARE(goal->cells.at(0).verdict, QStringLiteral("missed by 3 %"));
    QVERIFY(goal->cells.at(1).verdict.startsWith(QLatin1String("no verdict")));

    // On ARM, counts in the device's column only, judged whatever the load.
    const PerformanceReport::Row* armBefore = rowOf(rows, "the solid book on the device's ARM");
    QVERIFY(armBefore);
    QVERIFY(armBefore->cells.at(0).verdict.contains(QStringLiteral("device's Qt only")));
    QCOMPARE(armBefore->cells.at(1).ours,
        QStringLiteral("page 1 60.0 M, page 150 2140 M, page 300 4300 M instructions"));
    QCOMPARE(armBefore->cells.at(1).reference, QStringLiteral("ZIP 40.0 M, 40.0 M, 40.0 M"));
    QCOMPARE(armBefore->cells.at(1).verdict, QStringLiteral("reported"));
    const PerformanceReport::Row* armAfter = rowOf(rows, "the same from the extractor's cache");
    QVERIFY(armAfter);
    QCOMPARE(armAfter->cells.at(1).ours,
        QStringLiteral("page 1 52.0 M, page 150 56.0 M, page 300 64.0 M instructions"));
    QCOMPARE(armAfter->cells.at(1).ratio, QStringLiteral("1.30 ×, 1.40 ×, 1.60 ×"));
    QCOMPARE(armAfter->cells.at(1).verdict, QStringLiteral("missed by 7 %"));
}

QTEST_APPLESS_MAIN(TestPerformanceReport)
#include "tst_performancereport.moc"
