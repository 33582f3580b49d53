#include "BookArgument.h"

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
