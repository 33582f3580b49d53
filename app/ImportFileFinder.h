// SPDX-License-Identifier: MIT
#ifndef IMPORTFILEFINDER_H
#define IMPORTFILEFINDER_H

#include <QRegExp>
#include <QStringList>
#include <QVector>

// Finds the files that an import routes to the plug-in: those whose names
// match one of its file patterns, case-insensitively. Folders are searched
// recursively, skipping hidden files and folders.
class ImportFileFinder
{
public:
    explicit ImportFileFinder(const QStringList& patterns);

    bool matches(const QString& fileName) const;

    // Absolute paths of the files to import, each file once however many
    // paths reach it, in the order given (a folder's files sorted by path).
    // What cannot be imported (a missing path, a file of another type, a name
    // that is not valid UTF-8, a folder without matches) goes to problems as
    // a message for people.
    QStringList find(const QStringList& paths, QStringList* problems) const;

private:
    QStringList filesIn(const QString& folder, QStringList* problems) const;

    QVector<QRegExp> m_patterns;
};

#endif
