// SPDX-License-Identifier: MIT
#ifndef TAMBER_PAGELETMANAGER_H
#define TAMBER_PAGELETMANAGER_H

#include "Pagelet.h"
#include "TamberGlobal.h"

#include <QString>
#include <QVector>

// The host's store of page records.
class TAMBER_EXPORT PageletManager
{
public:
    // The book's page records in reading order; empty for an unknown book.
    static QVector<Pagelet> retrieveByBookId(const QString& bookId, const QString& userId);
};

#endif
