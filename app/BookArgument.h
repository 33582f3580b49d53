// SPDX-License-Identifier: MIT
#ifndef BOOKARGUMENT_H
#define BOOKARGUMENT_H

#include "Command.h"

#include <QString>

// The BOOK argument of the commands: a book id as stored (the path that was
// imported), or a path that resolves to one, relative or through links.
class BookArgument
{
public:
    // The stored book's id, or an empty string when no stored book matches.
    static QString resolve(const QString& argument);
    // As resolve(), telling the user when no stored book matches: exit with
    // Application::Failed then.
    static QString find(const QString& argument);
    // BOOK as the commands' help describes it.
    static Command::Argument help();
};

#endif
