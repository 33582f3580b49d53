// SPDX-License-Identifier: MIT
#ifndef READINGSTATUS_H
#define READINGSTATUS_H

#include <QString>

// Names of a book's reading status for people.
class ReadingStatus
{
public:
    // 0 "unread", 1 "reading", 2 "finished".
    static QString name(int status);
};

#endif
