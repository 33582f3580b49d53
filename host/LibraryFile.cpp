// SPDX-License-Identifier: MIT
#include "LibraryFile.h"
#include "QtCompat.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace {

const int headerSize = 100;
const QByteArray sqliteMagic("SQLite format 3\0", 16);

// isWritable() is always true for root, so a file or folder that has no write
// permission bit at all counts as read-only too.
bool isWritable(const QFileInfo& info)
{
    const QFile::Permissions anyWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    return info.isWritable() && (info.permissions() & anyWrite);
}

// A SQLite file with no application id may be adopted only while it holds no
// table: one page at most, and no journal with pending pages beside it.
bool holdsNothing(const QByteArray& header, const QFileInfo& info)
{
    int pageSize = qFromBigEndian<quint16>(reinterpret_cast<const uchar*>(header.constData()) + 16);
    if (pageSize == 1)
        pageSize = 65536;
    if (pageSize < 512)
        return false;
    const QFileInfo journal(info.filePath() + QStringLiteral("-wal"));
    return info.size() <= pageSize && !(journal.exists() && journal.size() > 0);
}

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

} // namespace

bool LibraryFile::check(const QString& path, QString* error)
{
    if (path.isEmpty())
        return fail(error, QStringLiteral("no library file given"));

    const QFileInfo info(path);
    if (info.isDir())
        return fail(error, QStringLiteral("%1 is a folder, not a library file").arg(path));

    const QFileInfo folder(info.absolutePath());
    if (!folder.isDir())
        return fail(
            error, QStringLiteral("%1: the folder %2 does not exist").arg(path, folder.filePath()));
    if (!isWritable(folder))
        return fail(
            error, QStringLiteral("%1: the folder %2 is read-only").arg(path, folder.filePath()));
    if (!info.exists())
        return true;

    if (!info.isFile())
        return fail(error, QStringLiteral("%1 is not a regular file").arg(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, QStringLiteral("%1 cannot be read: %2").arg(path, file.errorString()));
    if (!isWritable(info))
        return fail(error, QStringLiteral("%1 is read-only").arg(path));

    const QByteArray header = file.read(headerSize);
    // An empty file holds nothing to lose; SQLite makes a new database of it.
    if (header.isEmpty())
        return true;
    if (header.size() < headerSize || !header.startsWith(sqliteMagic))
        return fail(
            error, QStringLiteral("%1 is not a tamber library (not a SQLite file)").arg(path));

    const quint32 id = qFromBigEndian<quint32>(reinterpret_cast<const uchar*>(header.constData()) + 68);
    if (id == applicationId || (id == 0 && holdsNothing(header, info)))
        return true;
    return fail(error,
        QStringLiteral("%1 is not a tamber library (a SQLite file of another program)").arg(path));
}
