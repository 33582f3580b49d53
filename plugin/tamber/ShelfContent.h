// SPDX-License-Identifier: MIT
#ifndef TAMBER_SHELFCONTENT_H
#define TAMBER_SHELFCONTENT_H

#include "RecordObject.h"

#include <QDateTime>
#include <QString>

// Shelf record base: a shelf name, a content id and when it changed.
class TAMBER_EXPORT ShelfContent : public RecordObject
{
public:
    ShelfContent();
    ~ShelfContent() override {}

    QString shelfName;
    QString contentId;
    QDateTime dateModified;
};

#endif
