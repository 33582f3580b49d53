// SPDX-License-Identifier: MIT
#ifndef PAGETIMESPLOT_H
#define PAGETIMESPLOT_H

#include <QColor>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QString>

class QPainter;

// The plot of docs/performance.png: above, the time of each page turn and of
// its baseline steps on the same page; below, the resident set after each
// page; each for every Qt loaded.
class PageTimesPlot
{
public:
    // The CSV files that bench_view writes (--pages-csv, --memory-csv).
    // label names the Qt; limit, in MiB, is drawn as a line (0 for none).
    bool loadTimes(const QString& label, const QString& csv);
    bool loadMemory(const QString& label, const QString& csv, double limit);

    QImage image(const QSize& size) const;

private:
    struct Series
    {
        QString label;
        QColor colour;
        QList<QPointF> points;
        bool dashed = false;
    };

    static bool readColumns(const QString& csv, QList<QList<double>>* rows);
    static void panel(QPainter& painter, const QRectF& area, const QString& title,
        const QString& unit, const QList<Series>& series);

    QList<Series> timeSeries;
    QList<Series> memorySeries;
};

#endif
