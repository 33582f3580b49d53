#ifndef PAGETIMESPLOT_H
#define PAGETIMESPLOT_H

#include <QColor>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QString>

class QPainter;

// The plot of docs/performance.png: above, the time of each page turn and of
// decoding the same page alone; below, the resident set after each page.
class PageTimesPlot
{
public:
    // The CSV files that bench_view writes (--pages-csv, --memory-csv).
    bool loadTimes(const QString& csv);
    bool loadMemory(const QString& csv);
    // A horizontal line on the memory panel; 0 for none.
    void setMemoryLimit(double mebibytes) { memoryLimit = mebibytes; }

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
    double memoryLimit = 0;
};

#endif
