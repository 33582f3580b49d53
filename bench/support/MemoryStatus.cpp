// SPDX-License-Identifier: MIT
#include "MemoryStatus.h"

#include "QtCompat.h"

#include <QByteArray>
#include <QFile>

MemoryStatus MemoryStatus::now()
{
    MemoryStatus status;
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return status;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        // "VmRSS:	   12345 kB"
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.size() < 2)
            continue;
        if (words.first() == "VmRSS:")
            status.residentKiB = words.at(1).toLongLong();
        else if (words.first() == "VmHWM:")
            status.peakKiB = words.at(1).toLongLong();
    }
    return status;
}
