// SPDX-License-Identifier: MIT
#ifndef MEMORYSTATUS_H
#define MEMORYSTATUS_H

#include <QtGlobal>

// This process's resident set as the kernel counts it (/proc/self/status).
class MemoryStatus
{
public:
    static MemoryStatus now();

    qint64 residentKiB = 0;
    // The highest resident set so far (VmHWM).
    qint64 peakKiB = 0;
};

#endif
