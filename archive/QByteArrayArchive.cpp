// SPDX-License-Identifier: MIT
#include "QByteArrayArchive.h"

#include <QDebug>

QByteArrayArchive::QByteArrayArchive(const QByteArray& bytes)
    : ComicArchive(QString())
    , image(decode(bytes))
{
    qDebug() << "IMAGE VALID: " << !image.isNull();
}

QByteArrayArchive::~QByteArrayArchive() = default;

QStringList QByteArrayArchive::files()
{
    return QStringList(QString());
}

QImage QByteArrayArchive::data(const QString&)
{
    return image;
}
