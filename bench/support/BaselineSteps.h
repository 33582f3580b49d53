// SPDX-License-Identifier: MIT
#ifndef BASELINESTEPS_H
#define BASELINESTEPS_H

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

class ComicZipArchive;

// What showing a page must cost at least, outside the view: reading its
// entry (libzip inflates it), decoding it in full, the smooth scale to fit
// the screen, and filling and drawing the screen. A page turn is compared
// with these steps on the same page.
class BaselineSteps
{
public:
    BaselineSteps(const QString& comic, const QSize& screen);
    ~BaselineSteps();

    QByteArray inflate(const QString& entry);
    static QImage decode(const QByteArray& bytes);
    QImage scale(const QImage& page) const;
    void draw(const QImage& scaled);
    // All four in order; false when the page did not decode.
    bool show(const QString& entry);
    // What draw() drew.
    const QImage& screenImage() const { return screen; }

    BaselineSteps(const BaselineSteps&) = delete;
    BaselineSteps& operator=(const BaselineSteps&) = delete;

private:
    ComicZipArchive* archive;
    QImage screen;
};

#endif
