// SPDX-License-Identifier: MIT
#include "ComicPagePainter.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <cmath>

namespace {

const double referenceWidth = 1988.0;

// Flat process colours of the kind comics are printed in.
const QRgb palette[] = {
    0xf2d16b,
    0xe8743b,
    0x5b8fd6,
    0x9bc96b,
    0xd94f5c,
    0xf0b8c8,
    0x7a5cb0,
    0x66c2c2,
    0xc9a26b,
    0xe0e0d0,
    0x3d6fb6,
    0xf5e6a8,
};

} // namespace

ComicPagePainter::ComicPagePainter(quint64 seed)
    : state(seed * 0x9e3779b97f4a7c15ULL + 0x632be59bd9b4e019ULL)
{
}

quint64 ComicPagePainter::next()
{
    quint64 z = (state += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

double ComicPagePainter::uniform(double low, double high)
{
    return low + (high - low) * double(next() >> 11) / double(1ULL << 53);
}

int ComicPagePainter::pick(int low, int high)
{
    return low + int(next() % quint64(high - low + 1));
}

QColor ComicPagePainter::flatColour()
{
    return QColor(palette[next() % (sizeof(palette) / sizeof(palette[0]))]);
}

QImage ComicPagePainter::page(const QSize& size)
{
    unit = size.width() / referenceWidth;
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(252, 250, 244).rgb());

    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    const double margin = 70 * unit;
    const double gutter = 28 * unit;
    const QRectF area(margin, margin, size.width() - 2 * margin, size.height() - 2 * margin);

    // Rows of one to three panels; now and then a page is one splash panel.
    const int rows = next() % 9 == 0 ? 1 : pick(3, 4);
    double y = area.top();
    for (int row = 0; row < rows; ++row) {
        const double height = row == rows - 1
            ? area.bottom() - y
            : (area.height() - gutter * (rows - 1)) / rows * uniform(0.8, 1.2);
        const int columns = rows == 1 ? 1 : pick(1, 3);
        double x = area.left();
        for (int column = 0; column < columns; ++column) {
            const double width = column == columns - 1
                ? area.right() - x
                : (area.width() - gutter * (columns - 1)) / columns * uniform(0.75, 1.25);
            panel(painter, QRectF(x, y, width, height));
            x += width + gutter;
        }
        y += height + gutter;
    }
    return image;
}

void ComicPagePainter::panel(QPainter& painter, const QRectF& rect)
{
    painter.save();
    painter.setClipRect(rect);
    painter.fillRect(rect, flatColour());
    if (next() % 3 != 0)
        halftone(painter,
            QRectF(rect.left(), rect.top(), rect.width(), rect.height() * uniform(0.3, 0.7)));
    const int figures = pick(1, 3);
    for (int i = 0; i < figures; ++i)
        figure(painter, rect);
    if (next() % 4 == 0)
        speedLines(painter, rect);
    const int balloons = pick(0, 2);
    for (int i = 0; i < balloons; ++i)
        balloon(painter, rect);
    painter.restore();

    painter.setPen(QPen(Qt::black, 7 * unit));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect);
}

void ComicPagePainter::halftone(QPainter& painter, const QRectF& rect)
{
    // Ben-Day dots on a 45-degree grid, growing across the area like a
    // printed gradient.
    const double spacing = 11 * unit;
    const QColor ink = next() % 2 ? QColor(Qt::black) : flatColour().darker(160);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    int line = 0;
    for (double y = rect.top(); y < rect.bottom(); y += spacing / 2, ++line) {
        const double shift = line % 2 ? spacing / 2 : 0.0;
        const double grow = (y - rect.top()) / qMax(1.0, double(rect.height()));
        const double radius = spacing * (0.08 + 0.3 * grow);
        for (double x = rect.left() + shift; x < rect.right(); x += spacing)
            painter.drawEllipse(QPointF(x, y), radius, radius);
    }
}

void ComicPagePainter::figure(QPainter& painter, const QRectF& rect)
{
    // A filled, inked shape: a closed curve through points around a centre.
    const QPointF centre(uniform(rect.left(), rect.right()), uniform(rect.top(), rect.bottom()));
    const double reach = qMin(rect.width(), rect.height()) * uniform(0.15, 0.4);
    const int corners = pick(5, 9);
    QPainterPath outline;
    QPointF previous;
    for (int i = 0; i <= corners; ++i) {
        const double angle = 2 * M_PI * (i % corners) / corners;
        const double distance = reach * uniform(0.55, 1.0);
        const QPointF point(
            centre.x() + distance * std::cos(angle), centre.y() + distance * std::sin(angle));
        if (i == 0)
            outline.moveTo(point);
        else
            outline.quadTo((previous + point) / 2
                    + QPointF(uniform(-reach, reach) / 3, uniform(-reach, reach) / 3),
                point);
        previous = point;
    }
    painter.setBrush(flatColour());
    painter.setPen(QPen(Qt::black, uniform(5, 9) * unit, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(outline);

    // Hatched shadow inside the shape.
    painter.save();
    painter.setClipPath(outline, Qt::IntersectClip);
    painter.setPen(QPen(Qt::black, 2.2 * unit));
    const double step = 9 * unit;
    for (double d = -reach; d < reach; d += step)
        painter.drawLine(QPointF(centre.x() + d, centre.y() + reach * 0.2),
            QPointF(centre.x() + d + reach, centre.y() + reach));
    painter.restore();

    // Loose ink strokes: folds, hair, ground.
    const int strokes = pick(4, 10);
    for (int i = 0; i < strokes; ++i) {
        painter.setPen(QPen(Qt::black, uniform(2.5, 6) * unit, Qt::SolidLine, Qt::RoundCap));
        QPainterPath stroke;
        const QPointF start(
            centre.x() + uniform(-reach, reach), centre.y() + uniform(-reach, reach));
        stroke.moveTo(start);
        stroke.cubicTo(start + QPointF(uniform(-reach, reach), uniform(-reach, reach)) / 2,
            start + QPointF(uniform(-reach, reach), uniform(-reach, reach)) / 2,
            start + QPointF(uniform(-reach, reach), uniform(-reach, reach)) / 1.5);
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(stroke);
    }
}

void ComicPagePainter::speedLines(QPainter& painter, const QRectF& rect)
{
    const QPointF focus(uniform(rect.left(), rect.right()), uniform(rect.top(), rect.bottom()));
    const int lines = pick(30, 70);
    for (int i = 0; i < lines; ++i) {
        const double angle = uniform(0, 2 * M_PI);
        const double inner = qMin(rect.width(), rect.height()) * uniform(0.25, 0.45);
        const double outer = qMax(rect.width(), rect.height());
        painter.setPen(QPen(Qt::black, uniform(1.5, 4) * unit));
        painter.drawLine(focus + QPointF(std::cos(angle), std::sin(angle)) * inner,
            focus + QPointF(std::cos(angle), std::sin(angle)) * outer);
    }
}

void ComicPagePainter::balloon(QPainter& painter, const QRectF& rect)
{
    const double width = qMin(rect.width() * uniform(0.45, 0.75), 700 * unit);
    const double height = qMin(rect.height() * uniform(0.25, 0.4), 300 * unit);
    const QRectF shape(uniform(rect.left(), rect.right() - width),
        uniform(rect.top(), rect.top() + rect.height() * 0.4), width, height);

    const QPointF tailBase = shape.center() + QPointF(0, height * 0.4);
    QPolygonF tail;
    tail << tailBase - QPointF(width * 0.08, 0) << tailBase + QPointF(width * 0.08, 0)
         << tailBase + QPointF(uniform(-width, width) * 0.3, height * uniform(0.6, 0.9));
    QPainterPath outline;
    outline.addEllipse(shape);
    outline.addPolygon(tail);
    outline = outline.simplified();

    painter.setPen(QPen(Qt::black, 4 * unit));
    painter.setBrush(Qt::white);
    painter.drawPath(outline);
    // The largest rectangle inside an ellipse has sides of 1/sqrt(2) of its axes.
    const QRectF text(QPointF(0, 0), shape.size() / M_SQRT2);
    lettering(painter, text.translated(shape.center() - text.center()));
}

void ComicPagePainter::lettering(QPainter& painter, const QRectF& rect)
{
    // Upper-case hand-lettering, each glyph two to four strokes in its cell.
    const double glyphWidth = 20 * unit;
    const double glyphHeight = 28 * unit;
    const double leading = 40 * unit;
    painter.setPen(QPen(Qt::black, 3.5 * unit, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    for (double y = rect.top(); y + glyphHeight <= rect.bottom(); y += leading) {
        double x = rect.left();
        while (x + glyphWidth <= rect.right()) {
            const int wordLength = pick(2, 8);
            for (int i = 0; i < wordLength && x + glyphWidth <= rect.right(); ++i) {
                const QRectF cell(x, y, glyphWidth * 0.8, glyphHeight);
                const int strokes = pick(2, 4);
                for (int s = 0; s < strokes; ++s) {
                    const QPointF a(uniform(cell.left(), cell.right()),
                        next() % 2 ? cell.top() : uniform(cell.top(), cell.bottom()));
                    const QPointF b(uniform(cell.left(), cell.right()),
                        next() % 2 ? cell.bottom() : uniform(cell.top(), cell.bottom()));
                    if (next() % 4 == 0)
                        painter.drawArc(cell, pick(0, 180) * 16, pick(90, 300) * 16);
                    else
                        painter.drawLine(a, b);
                }
                x += glyphWidth;
            }
            x += glyphWidth * 0.8;
        }
    }
}
