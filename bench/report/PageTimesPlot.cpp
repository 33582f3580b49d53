// SPDX-License-Identifier: MIT
#include "PageTimesPlot.h"

#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

#include <algorithm>
#include <cmath>

namespace {

// A round step that divides range into about count parts.
double niceStep(double range, int count)
{
    const double raw = range / count;
    const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    for (double factor : { 1.0, 2.0, 2.5, 5.0 }) {
        if (factor * magnitude >= raw)
            return factor * magnitude;
    }
    return 10 * magnitude;
}

} // namespace

bool PageTimesPlot::readColumns(const QString& csv, QList<QList<double>>* rows)
{
    QFile file(csv);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QTextStream in(&file);
    in.readLine();
    while (!in.atEnd()) {
        const QStringList fields = in.readLine().split(QLatin1Char(','));
        QList<double> values;
        for (const QString& field : fields)
            values << field.toDouble();
        if (values.size() > 1)
            *rows << values;
    }
    return !rows->isEmpty();
}

namespace {

// Each Qt's series in shades of its own.
QColor shade(int run, int series)
{
    static const QColor colours[2][2] = {
        { QColor(0xd9, 0x4f, 0x1e), QColor(0x2b, 0x6c, 0xb0) },
        { QColor(0xe8, 0xa0, 0x3c), QColor(0x5b, 0xa8, 0x8a) },
    };
    return colours[qMin(run, 1)][series];
}

} // namespace

bool PageTimesPlot::loadTimes(const QString& label, const QString& csv)
{
    QList<QList<double>> rows;
    if (!readColumns(csv, &rows) || rows.first().size() < 3)
        return false;
    const int run = timeSeries.size() / 2;
    Series turn { label + QStringLiteral(": page turn (goToNextPage + paint)"), shade(run, 0), {} };
    Series steps { label + QStringLiteral(": its baseline steps"), shade(run, 1), {}, true };
    for (const QList<double>& row : rows) {
        turn.points << QPointF(row.at(0), row.at(1));
        steps.points << QPointF(row.at(0), row.at(2));
    }
    timeSeries << steps << turn;
    return true;
}

bool PageTimesPlot::loadMemory(const QString& label, const QString& csv, double limit)
{
    QList<QList<double>> rows;
    if (!readColumns(csv, &rows))
        return false;
    const int run = memorySeries.size() / 2;
    Series resident { label + QStringLiteral(": resident set after the page"), shade(run, 0), {} };
    for (const QList<double>& row : rows)
        resident.points << QPointF(row.at(0), row.at(1));
    Series goal { label + QStringLiteral(": goal, baseline + 3 decoded pages"), shade(run, 0), {},
        true };
    if (limit > 0)
        goal.points << QPointF(resident.points.first().x(), limit)
                    << QPointF(resident.points.last().x(), limit);
    memorySeries << resident << goal;
    return true;
}

QImage PageTimesPlot::image(const QSize& size) const
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(15);
    painter.setFont(font);

    const double split = size.height() * 0.6;
    panel(painter, QRectF(0, 0, size.width(), split), QStringLiteral("Time of each page turn"),
        QStringLiteral("ms"), timeSeries);
    panel(painter, QRectF(0, split, size.width(), size.height() - split),
        QStringLiteral("Memory while reading the book in one view"), QStringLiteral("MiB"),
        memorySeries);
    return image;
}

void PageTimesPlot::panel(QPainter& painter, const QRectF& area, const QString& title,
    const QString& unit, const QList<Series>& series)
{
    const QRectF plot = area.adjusted(80, 45, -30, -55);
    painter.setPen(Qt::black);
    painter.drawText(
        QRectF(area.left(), area.top() + 8, area.width(), 30), Qt::AlignHCenter, title);
    if (series.isEmpty()) {
        painter.drawText(plot, Qt::AlignCenter, QStringLiteral("no data"));
        return;
    }

    double xMin = 1e300;
    double xMax = -1e300;
    double yMax = 0;
    for (const Series& s : series) {
        for (const QPointF& point : s.points) {
            xMin = std::min(xMin, point.x());
            xMax = std::max(xMax, point.x());
            yMax = std::max(yMax, point.y());
        }
    }
    if (xMax <= xMin)
        xMax = xMin + 1;
    const double yStep = niceStep(yMax > 0 ? yMax : 1, 5);
    // Room above the highest line for the legend.
    yMax = std::ceil(yMax * 1.3 / yStep) * yStep;
    auto at = [&](const QPointF& point) {
        return QPointF(plot.left() + (point.x() - xMin) / (xMax - xMin) * plot.width(),
            plot.bottom() - point.y() / yMax * plot.height());
    };

    painter.setPen(QColor(0xdd, 0xdd, 0xdd));
    for (double y = 0; y <= yMax + yStep / 2; y += yStep) {
        const QPointF left = at(QPointF(xMin, y));
        painter.drawLine(left, QPointF(plot.right(), left.y()));
    }
    painter.setPen(Qt::black);
    painter.drawRect(plot);
    for (double y = 0; y <= yMax + yStep / 2; y += yStep) {
        const QPointF left = at(QPointF(xMin, y));
        painter.drawText(QRectF(area.left(), left.y() - 10, 70, 20),
            Qt::AlignRight | Qt::AlignVCenter, QString::number(y));
    }
    const double xStep = niceStep(xMax - xMin, 6);
    for (double x = std::ceil(xMin / xStep) * xStep; x <= xMax; x += xStep) {
        const QPointF bottom = at(QPointF(x, 0));
        painter.drawLine(bottom, bottom + QPointF(0, 5));
        painter.drawText(
            QRectF(bottom.x() - 40, bottom.y() + 6, 80, 20), Qt::AlignHCenter, QString::number(x));
    }
    painter.drawText(QRectF(plot.left(), plot.bottom() + 26, plot.width(), 20), Qt::AlignHCenter,
        QStringLiteral("page"));
    painter.save();
    painter.translate(area.left() + 14, plot.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-40, -10, 80, 20), Qt::AlignCenter, unit);
    painter.restore();

    auto penFor = [](const Series& s) {
        QPen pen(s.colour, s.dashed ? 1.5 : 1.8);
        if (s.dashed)
            pen.setStyle(Qt::DashLine);
        return pen;
    };
    for (const Series& s : series) {
        QPainterPath path;
        for (int i = 0; i < s.points.size(); ++i) {
            if (i == 0)
                path.moveTo(at(s.points.at(i)));
            else
                path.lineTo(at(s.points.at(i)));
        }
        painter.setPen(penFor(s));
        painter.drawPath(path);
    }

    const QRectF legend(plot.right() - 420, plot.top() + 6, 414, 20.0 * series.size() + 8);
    painter.fillRect(legend, Qt::white);
    double y = legend.top() + 4;
    for (const Series& s : series) {
        painter.setPen(penFor(s));
        painter.drawLine(QPointF(legend.left() + 8, y + 9), QPointF(legend.left() + 38, y + 9));
        painter.setPen(Qt::black);
        painter.drawText(QRectF(legend.left() + 46, y, legend.width() - 50, 18),
            Qt::AlignLeft | Qt::AlignVCenter, s.label);
        y += 20;
    }
}
