// SPDX-License-Identifier: MIT
#include "ImportFileFinder.h"
#include "HostCompat.h"

#include "Application.h"
#include "FileProblem.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <dirent.h>

namespace {

QString notRepresentable(const QString& shown)
{
    return QStringLiteral("%1: skipped, the name is not valid UTF-8 (the plug-in opens files by "
                          "UTF-8 names)")
        .arg(shown);
}

// The names in folder that Qt cannot name again (not valid UTF-8): QDirIterator
// would list them decoded with replacement characters, under which no file exists.
QSet<QString> unrepresentableNames(const QString& folder, QStringList* problems)
{
    QSet<QString> names;
    DIR* dir = opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return names;
    while (const dirent* entry = readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name.startsWith('.') || FileProblem::isRepresentable(name))
            continue;
        names.insert(QFile::decodeName(name));
        *problems << notRepresentable(
            folder + QLatin1Char('/') + FileProblem::bytesForPeople(name));
    }
    closedir(dir);
    return names;
}

} // namespace

ImportFileFinder::ImportFileFinder(const QStringList& patterns)
{
    for (const QString& pattern : patterns)
        m_patterns << QRegExp(pattern, Qt::CaseInsensitive, QRegExp::Wildcard);
}

bool ImportFileFinder::matches(const QString& fileName) const
{
    for (const QRegExp& pattern : m_patterns) {
        if (pattern.exactMatch(fileName))
            return true;
    }
    return false;
}

QStringList ImportFileFinder::filesIn(const QString& folder, QStringList* problems) const
{
    QStringList files;
    const QSet<QString> unrepresentable = unrepresentableNames(folder, problems);
    // Without QDir::Hidden, hidden files and folders are left out.
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info = it.fileInfo();
        if (unrepresentable.contains(info.fileName()))
            continue;
        if (info.isDir()) {
            // Linked folders are not followed: they may lead back up the tree.
            if (!info.isSymLink())
                files << filesIn(path, problems);
        } else if (matches(info.fileName())) {
            files << path;
        }
    }
    return files;
}

QStringList ImportFileFinder::find(const QStringList& paths, QStringList* problems) const
{
    QStringList result;
    // A file reached by two paths (a link) is imported once, under the first.
    QSet<QString> seen;
    auto add = [&](const QString& path) {
        const QFileInfo info(path);
        const QString absolute = QDir::cleanPath(info.absoluteFilePath());
        const QString canonical = info.canonicalFilePath();
        const QString key = canonical.isEmpty() ? absolute : canonical;
        if (!seen.contains(key)) {
            seen.insert(key);
            result << absolute;
        }
    };

    for (const QString& path : paths) {
        const QFileInfo info(path);
        const QByteArray raw = Application::rawArgument(path);
        if (!raw.isEmpty()) {
            *problems << notRepresentable(FileProblem::bytesForPeople(raw));
        } else if (!info.exists()) {
            *problems << QStringLiteral("%1: no such file or folder").arg(path);
        } else if (info.isDir()) {
            const int before = problems->size();
            QStringList files = filesIn(path, problems);
            if (files.isEmpty() && problems->size() == before)
                *problems << QStringLiteral("%1: no files of the plug-in's types").arg(path);
            files.sort();
            for (const QString& file : files)
                add(file);
        } else if (!matches(info.fileName())) {
            *problems << QStringLiteral("%1: not a file type that the plug-in reads").arg(path);
        } else {
            add(path);
        }
    }
    return result;
}
