// SPDX-License-Identifier: MIT
#ifndef HELPTEXT_H
#define HELPTEXT_H

#include <QString>

class Command;

// The tamber program's help, rendered from what the commands and the global
// options say about themselves: as plain text for --help, and as the roff
// source of the tamber(1) manual page, which the build makes with --man.
class HelpText
{
public:
    // tamber --help: the commands, the global options, the environment, the
    // files (with the paths that apply here) and the exit statuses.
    static QString programHelp();
    // tamber COMMAND --help.
    static QString commandHelp(const Command& command);
    // All of it, every command in full, as a man page.
    static QString manPage();
};

#endif
