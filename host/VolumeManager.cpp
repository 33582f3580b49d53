// SPDX-License-Identifier: MIT
#include "VolumeManager.h"

#include "HostTrace.h"
#include "Library.h"

Volume VolumeManager::getById(const QString& id, const QString& userId)
{
    HostTrace::Call call("VolumeManager::getById", { id, userId });
    return Library::book(id);
}

void VolumeManager::updateBookmark(const QString& volumeId, const QString& pageId,
    int chapterOffset, int pageOffset, int percent, const QDateTime& date, const QString& extraData)
{
    HostTrace::Call call("VolumeManager::updateBookmark",
        { volumeId, pageId, chapterOffset, pageOffset, percent, date, extraData });
    // The offsets and the extra data mean nothing for a comic; the position is
    // the page id.
    Library::updateBookmark(volumeId, pageId, percent, date);
}

void VolumeManager::updateReadingStatus(const QString& volumeId, int status, const QString& userId)
{
    HostTrace::Call call("VolumeManager::updateReadingStatus", { volumeId, status, userId });
    Library::updateReadingStatus(volumeId, status);
}
