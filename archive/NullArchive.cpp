// SPDX-License-Identifier: MIT
#include "NullArchive.h"

#include "QtCompat.h"

#ifdef TAMBER_KEYED_PNG
#include "KeyedPng.h"
#endif

#include <QDebug>
#include <QFile>
#include <QImageReader>

namespace {

const qint32 pixelBudget = 4096 * 4096;
const double shrinkFactor = 0.75;

// Deliberately a 32-bit product that wraps: a size whose product wraps to
// within the budget is decoded unbounded.
qint32 pixelCount(int width, int height)
{
    return qint32(quint32(width) * quint32(height));
}

} // namespace

NullArchive::NullArchive(const QString& path)
    : ComicArchive(path)
    , path(path)
{
}

NullArchive::~NullArchive() = default;

QStringList NullArchive::files()
{
    return QStringList(path);
}

QImage NullArchive::data(const QString& name)
{
    QImageReader reader(name, QByteArray());
    // The size the reader reports, as the device asks it; a GIF's larger
    // canvas is bounded by the memory limit below.
    const QSize size = reader.size();
    int width = size.width();
    int height = size.height();

    if (width >= 0 && height >= 0 && pixelCount(width, height) > pixelBudget) {
        // Each side shrinks on its own, so the aspect ratio is only roughly kept.
        do {
            width = int(width * shrinkFactor);
            height = int(height * shrinkFactor);
        } while (pixelCount(width, height) > pixelBudget);

        // Only a decoder that decodes smaller: one that shrinks afterwards
        // would hold the whole image first.
        if (!decodesReduced(reader)) {
            qDebug() << "Image too big and scaling not supported, bailing!";
            return QImage();
        }
        const QSize scaledSize(width, height);
        qDebug() << "Image too big, scaling to" << scaledSize;
        reader.setScaledSize(scaledSize);
    }

    // A size whose pixel count wrapped still decodes in full, and fails here as
    // it fails on the device, where such memory does not exist.
    if (!fitsMemoryLimit(reader)) {
        qDebug() << "Image load error:" << QStringLiteral("Image too big to decode");
        return QImage();
    }
    QImage image;
#ifdef TAMBER_KEYED_PNG
    if (reader.format() == "png") {
        QFile file(name);
        if (file.open(QIODevice::ReadOnly) && KeyedPng::isDeepColourWithKey(file.peek(1 << 20)))
            image = KeyedPng::read(file.read(memoryLimit));
    }
    if (image.isNull())
#endif
        image = reader.read();
    if (image.isNull())
        qDebug() << "Image load error:" << reader.errorString();
    return image;
}
