// SPDX-License-Identifier: MIT
#ifndef FILEPROBLEM_H
#define FILEPROBLEM_H

#include <QByteArray>
#include <QString>

// Why a comic file cannot be read, found by looking at the file itself, for
// messages that name the cause rather than only the symptom.
class FileProblem
{
public:
    // "the file is gone", "permission denied", "not a ZIP file", ...; empty
    // when nothing is wrong with the file as such. A file:// URL names its path.
    static QString of(const QString& pathOrUrl);

    // A file name's bytes for people: printable ASCII and valid UTF-8 as they
    // are, every other byte as \xNN.
    static QString bytesForPeople(const QByteArray& name);
    // Whether the name survives the round trip through QString that every Qt
    // file operation makes (it does not when it is not valid UTF-8).
    static bool isRepresentable(const QByteArray& name);
};

#endif
