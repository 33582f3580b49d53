// SPDX-License-Identifier: MIT
// The session script parser over arbitrary text. Lines keep their numbers in
// order; a line that parses gives words that, quoted again, parse to the same
// words; an unterminated quote gives an error and no words.

#include "SessionScript.h"

#include <cstddef>
#include <cstdint>

namespace {

void require(bool condition)
{
    if (!condition)
        __builtin_trap();
}

QString quoted(QString word)
{
    word.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    word.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + word + QLatin1Char('"');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    const int rows = text.count(QLatin1Char('\n')) + 1;
    int previous = 0;
    for (const ScriptLine& line : SessionScript::parse(text)) {
        require(line.number > previous && line.number <= rows);
        previous = line.number;
        if (!line.error.isEmpty()) {
            require(line.words.isEmpty());
            continue;
        }
        require(!line.words.isEmpty());
        QStringList requoted;
        for (const QString& word : line.words)
            requoted << quoted(word);
        const ScriptLine again = SessionScript::parseLine(requoted.join(QLatin1Char(' ')), 1);
        require(again.error.isEmpty() && again.words == line.words);
    }
    return 0;
}
