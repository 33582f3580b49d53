// SPDX-License-Identifier: MIT
#ifndef WORKLOADGENERATOR_H
#define WORKLOADGENERATOR_H

#include "Workload.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

// Makes the files of a workload. Everything is derived from fixed seeds, so
// the same plan always gives the same pages.
class WorkloadGenerator
{
public:
    explicit WorkloadGenerator(const Workload& plan);

    // Writes every file and then the manifest; false with a message on failure.
    bool run(QString* error);

private:
    bool comic(QString* error);
    bool entriesComic(QString* error);
    bool library(QString* error);
    bool largeImage(QString* error);
    bool bigBook(QString* error);

    static QByteArray jpeg(const QImage& image, int quality);
    // Pages painted on all cores, as JPEG bytes in page order.
    QList<QByteArray> pages(int count, const QSize& size, quint64 firstSeed, int quality) const;

    Workload plan;
};

#endif
