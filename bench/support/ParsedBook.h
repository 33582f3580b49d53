// SPDX-License-Identifier: MIT
#ifndef PARSEDBOOK_H
#define PARSEDBOOK_H

#include "Pagelet.h"
#include "Volume.h"

#include <QObject>
#include <QString>
#include <QVector>

// What a host keeps of a parse: every record the parser's signals carry,
// received as the host receives them (a direct connection per signal).
class ParsedBook : public QObject
{
    Q_OBJECT

public:
    // Parses the file with the plug-in's parser.
    static void parse(const QString& path, ParsedBook* book);

    QVector<Pagelet> pages;
    Volume volume;
    // Whether the book's record came.
    bool parsed = false;

private slots:
    void addPage(Pagelet& pagelet);
    void setVolume(Volume& volume, bool hasRights, bool isLoan);
};

#endif
