// SPDX-License-Identifier: MIT
#ifndef TAMBER_LIBRARYSCHEMA_H
#define TAMBER_LIBRARYSCHEMA_H

#include "TamberGlobal.h"

#include <QSqlDatabase>
#include <QString>

// The tables of a library file and how each version of them is reached.
// The version lives in PRAGMA user_version.
class TAMBER_EXPORT LibrarySchema
{
public:
    static int currentVersion();

    // Creates or migrates the schema of an open connection, one transaction per
    // version step, then switches the file to WAL journaling. A file of a newer
    // version is refused untouched.
    static bool prepare(QSqlDatabase& db, QString* error);
};

#endif
