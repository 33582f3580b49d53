// SPDX-License-Identifier: MIT
#ifndef TAMBER_LIBRARYFILE_H
#define TAMBER_LIBRARYFILE_H

#include "TamberGlobal.h"

#include <QString>

// Looks at a library path before the SQLite driver may touch it: the file must
// be a tamber library, an empty SQLite file or not exist yet, and the file and
// its folder must be writable (the journal lives beside the file).
class TAMBER_EXPORT LibraryFile
{
public:
    // Marks a SQLite file as a tamber library (PRAGMA application_id): "TAMB".
    static constexpr quint32 applicationId = 0x54414d42;

    // True when the driver may open path; otherwise false with a message for
    // people in error. Reads the file's header and nothing else.
    static bool check(const QString& path, QString* error);
};

#endif
