// SPDX-License-Identifier: MIT
#ifndef SESSIONSCRIPT_H
#define SESSIONSCRIPT_H

#include <QString>
#include <QStringList>
#include <QVector>

// One command of a session script: its words and where it stood.
struct ScriptLine
{
    int number = 0; // 1-based line number in the script
    QStringList words;
    QString error; // set when the line could not be split into words
};

// Splits a session script into commands. One command per line; blank lines and
// lines starting with '#' are skipped; words are separated by blanks; a word in
// double quotes may hold blanks, with \" and \\ as escapes.
class SessionScript
{
public:
    static QVector<ScriptLine> parse(const QString& text);
    static ScriptLine parseLine(const QString& line, int number);
};

#endif
