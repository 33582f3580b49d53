// SPDX-License-Identifier: MIT
#ifndef QBYTEARRAYARCHIVE_H
#define QBYTEARRAYARCHIVE_H

#include "ComicArchive.h"

#include <QByteArray>

// One image held in memory as encoded bytes, decoded once when built. Lists
// one entry, "", and hands out that image whatever the name asked for.
class QByteArrayArchive : public ComicArchive
{
public:
    explicit QByteArrayArchive(const QByteArray& bytes);
    ~QByteArrayArchive() override;

    QStringList files() override;
    QImage data(const QString& name) override;

private:
    QImage image;
};

#endif
