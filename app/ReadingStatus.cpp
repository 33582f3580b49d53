// SPDX-License-Identifier: MIT
#include "ReadingStatus.h"
#include "HostCompat.h"

QString ReadingStatus::name(int status)
{
    switch (status) {
    case 0:
        return QStringLiteral("unread");
    case 1:
        return QStringLiteral("reading");
    case 2:
        return QStringLiteral("finished");
    default:
        return QStringLiteral("status %1").arg(status);
    }
}
