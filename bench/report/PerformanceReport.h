#ifndef PERFORMANCEREPORT_H
#define PERFORMANCEREPORT_H

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// The figures of one run of the benchmark programs (their JSON output), as a
// table of workload, our figure, the reference figure, their ratio and the goal.
class PerformanceReport
{
public:
    struct Row
    {
        QString workload;
        QString ours;
        QString reference;
        QString ratio;
        QString goal;
        // "met", "missed by ..." or "reported"; an error says what failed.
        QString verdict;
    };

    // Reads every *.json in resultsDir that Google Benchmark wrote.
    bool load(const QString& resultsDir, QString* error);

    QList<Row> rows() const;
    // The memory goal of reading a book, in MiB; 0 when it did not run.
    double memoryLimit() const;
    // The table as aligned plain text, for the terminal.
    QString text() const;
    // The whole page: the run's context, the table, what each row measures,
    // and notes (Markdown) appended as they are.
    QString markdown(const QString& workloadSummary, const QString& notes) const;

private:
    // The benchmark whose name starts with prefix; an empty object if none ran.
    QJsonObject benchmark(const QString& prefix) const;
    QString context() const;

    QList<QJsonObject> benchmarks;
    QJsonObject runContext;
};

#endif
