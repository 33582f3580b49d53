// SPDX-License-Identifier: MIT
#ifndef COMICPAGEPAINTER_H
#define COMICPAGEPAINTER_H

#include <QImage>
#include <QRectF>
#include <QtGlobal>

class QPainter;

// Paints what a printed comic page is made of: flat-coloured panels in black
// frames, ink lines and hatching, halftone dots, speech balloons with
// hand-lettering. The same seed gives the same page; no font is used, so the
// pixels do not depend on the fonts a machine has.
class ComicPagePainter
{
public:
    explicit ComicPagePainter(quint64 seed);

    QImage page(const QSize& size);

private:
    // splitmix64: small, fast and the same everywhere.
    quint64 next();
    double uniform(double low, double high);
    int pick(int low, int high);
    QColor flatColour();

    void panel(QPainter& painter, const QRectF& rect);
    void halftone(QPainter& painter, const QRectF& rect);
    void figure(QPainter& painter, const QRectF& rect);
    void speedLines(QPainter& painter, const QRectF& rect);
    void balloon(QPainter& painter, const QRectF& rect);
    void lettering(QPainter& painter, const QRectF& rect);

    quint64 state;
    // Pixels per point of a 1988-pixel-wide page, so that every size looks alike.
    double unit = 1.0;
};

#endif
