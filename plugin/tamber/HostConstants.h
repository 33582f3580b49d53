// SPDX-License-Identifier: MIT
#ifndef TAMBER_HOSTCONSTANTS_H
#define TAMBER_HOSTCONSTANTS_H

#include "QtCompat.h"

#include <QString>

// Column and device names of the host's record headers. Every source file that
// includes a record header gets its own copies, as on the device.
static const QString SHELF_NAME = QStringLiteral("ShelfName");
static const QString CONTENT_ID = QStringLiteral("ContentId");
static const QString DATE_MODIFIED = QStringLiteral("DateModified");
static const QString IS_DELETED = QStringLiteral("_IsDeleted");
static const QString IS_SYNCED = QStringLiteral("_IsSynced");
static const QString DEFAULT_MAC_ADDRESS = QStringLiteral("11:22:33:44:55:66");
static const QString SD_CARD_PATH = QStringLiteral("/mnt/sd");

#endif
