// SPDX-License-Identifier: MIT
#include "BookArgument.h"

#include "Application.h"
#include "Library.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {

const QString fileScheme = QStringLiteral("file://");

bool isStored(const QString& id)
{
    return !id.isEmpty() && !Library::book(id).getId().isEmpty();
}

QString withoutScheme(QString path)
{
    return path.remove(fileScheme);
}

} // namespace

QString BookArgument::resolve(const QString& argument)
{
    if (isStored(argument))
        return argument;

    const QFileInfo info(withoutScheme(argument));
    const QString absolute = QDir::cleanPath(info.absoluteFilePath());
    const QString canonical = info.canonicalFilePath();
    for (const QString& path : { absolute, canonical }) {
        for (const QString& id : { path, fileScheme + path }) {
            if (isStored(id))
                return id;
        }
    }

    // Stored under another path to the same file.
    if (canonical.isEmpty())
        return QString();
    for (const Volume& book : Library::books()) {
        if (QFileInfo(withoutScheme(book.getId())).canonicalFilePath() == canonical)
            return book.getId();
    }
    return QString();
}

QString BookArgument::find(const QString& argument)
{
    const QString id = resolve(argument);
    if (id.isEmpty())
        Application::warn(QStringLiteral("%1: no such book in the library").arg(argument));
    return id;
}

Command::Argument BookArgument::help()
{
    return { QStringLiteral("BOOK"),
        QStringLiteral("A book id as stored, or a path that leads to the same file."), QString() };
}
