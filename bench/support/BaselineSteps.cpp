// SPDX-License-Identifier: MIT
#include "BaselineSteps.h"

#include "ComicZipArchive.h"

#include <QPainter>

BaselineSteps::BaselineSteps(const QString& comic, const QSize& screenSize)
    : archive(new ComicZipArchive(comic))
    , screen(screenSize, QImage::Format_RGB32)
{
}

BaselineSteps::~BaselineSteps()
{
    delete archive;
}

QByteArray BaselineSteps::inflate(const QString& entry)
{
    return archive->raw(entry);
}

QImage BaselineSteps::decode(const QByteArray& bytes)
{
    QImage image;
    image.loadFromData(bytes);
    return image;
}

QImage BaselineSteps::scale(const QImage& page) const
{
    return page.scaled(screen.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

void BaselineSteps::draw(const QImage& scaled)
{
    QPainter painter(&screen);
    painter.fillRect(screen.rect(), Qt::white);
    // Centred as the view centres a page narrower than the screen.
    const QPointF at(
        (screen.width() - scaled.width()) / 2, (screen.height() - scaled.height()) / 2);
    painter.drawImage(at, scaled);
}

bool BaselineSteps::show(const QString& entry)
{
    const QImage page = decode(inflate(entry));
    if (page.isNull())
        return false;
    draw(scale(page));
    return true;
}
