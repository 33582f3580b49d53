#include "ImportFileFinder.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>

ImportFileFinder::ImportFileFinder(const QStringList& patterns)
{
    for (const QString& pattern : patterns)
        m_patterns << QRegularExpression(QRegularExpression::wildcardToRegularExpression(pattern),
            QRegularExpression::CaseInsensitiveOption);
}

bool ImportFileFinder::matches(const QString& fileName) const
{
    for (const QRegularExpression& pattern : m_patterns) {
        if (pattern.match(fileName).hasMatch())
            return true;
    }
    return false;
}

QStringList ImportFileFinder::filesIn(const QString& folder) const
{
    QStringList files;
    // Without QDir::Hidden, hidden files and folders are left out.
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info = it.fileInfo();
        if (info.isDir()) {
            // Linked folders are not followed: they may lead back up the tree.
            if (!info.isSymLink())
                files << filesIn(path);
        } else if (matches(info.fileName())) {
            files << path;
        }
    }
    return files;
}

QStringList ImportFileFinder::find(const QStringList& paths, QStringList* problems) const
{
    QStringList result;
    QSet<QString> seen;
    auto add = [&](const QString& path) {
        const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (!seen.contains(absolute)) {
            seen.insert(absolute);
            result << absolute;
        }
    };

    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (!info.exists()) {
            *problems << QStringLiteral("%1: no such file or folder").arg(path);
        } else if (info.isDir()) {
            QStringList files = filesIn(path);
            if (files.isEmpty())
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
