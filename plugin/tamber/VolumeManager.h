// SPDX-License-Identifier: MIT
#ifndef TAMBER_VOLUMEMANAGER_H
#define TAMBER_VOLUMEMANAGER_H

#include "TamberGlobal.h"
#include "Volume.h"

#include <QDateTime>
#include <QString>

// The host's store of book records, reading positions and reading status.
class TAMBER_EXPORT VolumeManager
{
public:
    // The stored book; an empty record for an unknown id.
    static Volume getById(const QString& id, const QString& userId);

    static void updateBookmark(const QString& volumeId, const QString& pageId, int chapterOffset,
        int pageOffset, int percent, const QDateTime& date, const QString& extraData);

    // status: 1 reading, 2 finished.
    static void updateReadingStatus(const QString& volumeId, int status, const QString& userId);
};

#endif
