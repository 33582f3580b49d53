// SPDX-License-Identifier: MIT
#include "SessionScript.h"
#include "HostCompat.h"

QVector<ScriptLine> SessionScript::parse(const QString& text)
{
    QVector<ScriptLine> lines;
    const QStringList rows = text.split(QLatin1Char('\n'), QtCompat::KeepEmptyParts);
    for (int i = 0; i < rows.size(); ++i) {
        QString row = rows.at(i);
        if (row.endsWith(QLatin1Char('\r')))
            row.chop(1);
        const QString trimmed = row.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#')))
            continue;
        lines << parseLine(row, i + 1);
    }
    return lines;
}

ScriptLine SessionScript::parseLine(const QString& line, int number)
{
    ScriptLine result;
    result.number = number;
    // A NUL would cut the command short wherever it is passed on as a C string.
    if (line.contains(QChar(0))) {
        result.error = QStringLiteral("the line holds a NUL byte");
        return result;
    }

    QString word;
    bool inWord = false;
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (quoted) {
            if (c == QLatin1Char('\\') && i + 1 < line.size()
                && (line.at(i + 1) == QLatin1Char('"') || line.at(i + 1) == QLatin1Char('\\'))) {
                word += line.at(++i);
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                word += c;
            }
        } else if (c.isSpace()) {
            if (inWord)
                result.words << word;
            word.clear();
            inWord = false;
        } else if (c == QLatin1Char('"')) {
            quoted = true;
            inWord = true;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (quoted) {
        result.error = QStringLiteral("unterminated quote");
        result.words.clear();
        return result;
    }
    if (inWord)
        result.words << word;
    return result;
}
