// SPDX-License-Identifier: MIT
#ifndef PERFORMANCEREPORT_H
#define PERFORMANCEREPORT_H

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// The figures of the benchmark programs' runs (their JSON output), one run
// per Qt, as a table: per workload its goal and, for each Qt, our figure,
// the reference figure, their ratio and whether the goal was met. A verdict
// on times stands only where scripts/bench found the program's run quiet
// enough (its record in load/PROGRAM.json); counts and memory need no such
// record.
class PerformanceReport
{
public:
    struct Cell
    {
        QString ours;
        QString reference;
        QString ratio;
        // "met", "missed by ...", "reported", or "no verdict: ..." for times
        // from a run too busy to judge; an error says what failed.
        QString verdict;
    };
    struct Row
    {
        QString workload;
        QString goal;
        // One per run, in the order they were loaded.
        QList<Cell> cells;
    };

    // Reads every *.json in resultsDir that Google Benchmark (or
    // scripts/bench-instructions) wrote, as the run of the Qt named label,
    // and the load of each program's run that scripts/bench wrote beside
    // them in load/.
    bool load(const QString& label, const QString& resultsDir, QString* error);

    QStringList labels() const;
    QList<Row> rows() const;
    // The memory goal of reading the comic in a run, in MiB; 0 when it did not run.
    double memoryLimit(int run) const;
    // The table as aligned plain text, for the terminal.
    QString text() const;
    // The whole page: the runs' context, the table, the page turn's steps,
    // and notes (Markdown) appended as they are.
    QString markdown(const QString& workloadSummary, const QString& notes) const;

private:
    struct Run
    {
        QString label;
        // Each with "program", the name of the file it came from.
        QList<QJsonObject> benchmarks;
        QJsonObject context;
        // scripts/bench's record of each program's run, by program.
        QMap<QString, QJsonObject> loads;
    };

    // The benchmark of a run whose name starts with prefix; an empty object if none ran.
    static QJsonObject benchmark(const Run& run, const QString& prefix);
    static QString context(const Run& run);
    // Why a verdict on the times of the program's run cannot stand; empty when it can.
    static QString busyReason(const Run& run, const QString& program);
    QString loadTable() const;
    QString stepsTable() const;

    QList<Run> runs;
};

#endif
