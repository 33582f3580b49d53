// SPDX-License-Identifier: MIT
#include "LibrarySchema.h"
#include "QtCompat.h"

#include "LibraryFile.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>
#include <QVector>

namespace {

// Statements that take a library from version i to version i + 1. Append a
// step for every change; never edit a step that has shipped.
const QVector<QStringList>& steps()
{
    static const QVector<QStringList> list = {
        {
            QStringLiteral("CREATE TABLE volumes ("
                           " id TEXT PRIMARY KEY NOT NULL,"
                           " title TEXT, author TEXT, description TEXT, mime_type TEXT, date TEXT,"
                           " content_type TEXT, user_id TEXT, image_id TEXT,"
                           " page_count INTEGER NOT NULL DEFAULT 0,"
                           " read_status INTEGER NOT NULL DEFAULT 0,"
                           " bookmarked_page_id TEXT NOT NULL DEFAULT '',"
                           " percent_read INTEGER NOT NULL DEFAULT 0,"
                           " bookmark_date TEXT)"),
            QStringLiteral("CREATE TABLE pages ("
                           " row INTEGER PRIMARY KEY,"
                           " book_id TEXT NOT NULL, id TEXT NOT NULL,"
                           " volume_index INTEGER NOT NULL,"
                           " title TEXT, content_type TEXT, mime_type TEXT, user_id TEXT,"
                           " image_id TEXT)"),
            QStringLiteral("CREATE INDEX pages_by_book ON pages (book_id, volume_index)"),
            // book_id is the table (book) the dog ear was added to; volume_id is
            // what the caller passed along with it.
            QStringLiteral("CREATE TABLE dog_ears ("
                           " id INTEGER PRIMARY KEY AUTOINCREMENT,"
                           " book_id TEXT NOT NULL, page_key INTEGER NOT NULL DEFAULT 0,"
                           " content_id TEXT, volume_id TEXT, text TEXT,"
                           " chapter_index INTEGER NOT NULL DEFAULT 0,"
                           " page_offset INTEGER NOT NULL DEFAULT 0,"
                           " extra_data TEXT, progress REAL NOT NULL DEFAULT 0, date TEXT,"
                           " hidden INTEGER NOT NULL DEFAULT 0)"),
            QStringLiteral("CREATE INDEX dog_ears_by_book ON dog_ears (book_id)"),
        },
    };
    return list;
}

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

bool readPragma(QSqlDatabase& db, const QString& name, qint64* value, QString* error)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA ") + name) || !query.next())
        return fail(error, query.lastError().text());
    *value = query.value(0).toLongLong();
    return true;
}

bool runStep(QSqlDatabase& db, int from, QString* error)
{
    if (!db.transaction())
        return fail(error, db.lastError().text());
    QSqlQuery query(db);
    QStringList statements = steps().at(from);
    statements << QStringLiteral("PRAGMA user_version = %1").arg(from + 1);
    if (from == 0)
        statements << QStringLiteral("PRAGMA application_id = %1").arg(LibraryFile::applicationId);
    for (const QString& statement : statements) {
        if (!query.exec(statement)) {
            const QString message = query.lastError().text();
            db.rollback();
            return fail(error, message);
        }
    }
    if (!db.commit()) {
        const QString message = db.lastError().text();
        db.rollback();
        return fail(error, message);
    }
    return true;
}

} // namespace

int LibrarySchema::currentVersion()
{
    return steps().size();
}

bool LibrarySchema::prepare(QSqlDatabase& db, QString* error)
{
    qint64 version = 0;
    if (!readPragma(db, QStringLiteral("user_version"), &version, error))
        return false;
    if (version > currentVersion())
        return fail(error,
            QStringLiteral("the library was made by a newer tamber (schema version %1, this one "
                           "knows up to %2)")
                .arg(version)
                .arg(currentVersion()));

    // The schema is written before the switch to WAL, so that the file's own
    // header carries the application id from the start.
    for (int from = int(version); from < currentVersion(); ++from) {
        if (!runStep(db, from, error))
            return false;
    }

    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA journal_mode = WAL")))
        return fail(error, query.lastError().text());
    // With WAL, NORMAL still keeps every committed transaction when the host
    // is killed (the log is in the system's cache). What it leaves out is the
    // flush to disk at each commit, which only a power cut needs and which
    // took a third of the time of importing many books; checkpoints still flush.
    if (!query.exec(QStringLiteral("PRAGMA synchronous = NORMAL")))
        return fail(error, query.lastError().text());
    return true;
}
