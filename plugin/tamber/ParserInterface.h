// SPDX-License-Identifier: MIT
#ifndef TAMBER_PARSERINTERFACE_H
#define TAMBER_PARSERINTERFACE_H

#include "Pagelet.h"
#include "Volume.h"

#include <QImage>
#include <QObject>
#include <QString>

// Turns a file into library records, announced by signals: one pageletParsed
// per page, then volumeParsed; imageParsed answers a cover request.
class ParserInterface : public QObject
{
    Q_OBJECT

public:
    ParserInterface() : QObject(nullptr) {}
    ~ParserInterface() override {}

    virtual void parse(const QString& path) = 0;
    virtual void parseCoverImage(const Volume& volume) = 0;

signals:
    void volumeParsed(Volume& volume, bool hasRights, bool isLoan);
    void pageletParsed(Pagelet& pagelet);
    void imageParsed(const Volume& volume, const QImage& image);
};

#endif
