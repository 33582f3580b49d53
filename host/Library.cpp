// SPDX-License-Identifier: MIT
#include "Library.h"
#include "QtCompat.h"

#include "LibraryFile.h"
#include "LibrarySchema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

const QString connectionName = QStringLiteral("tamber-library");
QString openPath;

QSqlDatabase database()
{
    return QSqlDatabase::database(connectionName, false);
}

// Statements are prepared once per open library and kept, so that SQLite
// parses and plans each only once however many books an import stores.
QHash<QString, QSqlQuery>& preparedStatements()
{
    static QHash<QString, QSqlQuery> statements;
    return statements;
}

// The prepared statement for sql, its values unbound. A copy shares the
// statement. Callers finish() a read so that it holds no read lock.
QSqlQuery statement(const QString& sql)
{
    QHash<QString, QSqlQuery>& statements = preparedStatements();
    const auto found = statements.constFind(sql);
    if (found != statements.constEnd())
        return found.value();
    QSqlQuery query(database());
    if (query.prepare(sql))
        statements.insert(sql, query);
    return query;
}

// Why the last call failed, for people; each call starts by clearing it.
QString& lastMessage()
{
    static QString message;
    return message;
}

bool fail(const QString& message)
{
    lastMessage() = message;
    return false;
}

// Every call starts here: no error yet, and false with one when no library is open.
bool begin()
{
    lastMessage().clear();
    return Library::isOpen() || fail(QStringLiteral("no library is open"));
}

// Dates are stored as ISO 8601 text in UTC with milliseconds; NULL when invalid.
// Written out rather than Qt::ISODateWithMs, which Qt 4 lacks; the text is the same.
const char* const isoDateFormat = "yyyy-MM-ddTHH:mm:ss.zzzZ";

QVariant dateValue(const QDateTime& date)
{
    return date.isValid()
        ? QVariant(date.toUTC().toString(QString::fromLatin1(isoDateFormat)))
        : QVariant();
}

QDateTime dateFromValue(const QVariant& value)
{
    if (value.isNull())
        return QDateTime();
    QDateTime date = QDateTime::fromString(value.toString(), QString::fromLatin1(isoDateFormat));
    date.setTimeSpec(Qt::UTC);
    return date;
}

// QtSql binds a null QString as NULL; the record fields are never NULL.
QVariant text(const QString& value)
{
    return value.isNull() ? QVariant(QString::fromLatin1("")) : QVariant(value);
}

// An absent attribute is stored as NULL, so that it comes back absent.
QVariant attributeValue(const Content& record, const QString& name)
{
    const QVariant value = record.attribute(name);
    return value.isValid() ? text(value.toString()) : QVariant();
}

const char* const volumeColumns = "id, title, author, description, mime_type, date, content_type, "
                                  "user_id, image_id, page_count, read_status, "
                                  "bookmarked_page_id, percent_read";

Volume volumeFromQuery(const QSqlQuery& query)
{
    Volume volume;
    volume.setId(query.value(0));
    // The stored title is both the field and the attribute, as the view
    // reads the field and the parser writes the attribute.
    if (!query.isNull(1)) {
        volume.setTitle(query.value(1));
        volume.setAttribute(ATTRIBUTE_TITLE, query.value(1).toString());
    }
    if (!query.isNull(2))
        volume.setAttribute(ATTRIBUTE_ATTRIBUTION, query.value(2).toString());
    if (!query.isNull(3))
        volume.setAttribute(ATTRIBUTE_DESCRIPTION, query.value(3).toString());
    if (!query.isNull(4))
        volume.setAttribute(ATTRIBUTE_MIME_TYPE, query.value(4).toString());
    if (!query.isNull(5))
        volume.setAttribute(ATTRIBUTE_DATE, dateFromValue(query.value(5)));
    volume.setContentType(query.value(6).toString());
    volume.setUserID(query.value(7).toString());
    volume.setImageId(query.value(8).toString());
    volume.setPageCount(query.value(9).toInt());
    volume.setReadStatus(query.value(10).toInt());
    volume.setBookmarkedPageId(query.value(11).toString());
    volume.setPercentRead(query.value(12).toInt());
    return volume;
}

Bookmark dogEarFromQuery(const QSqlQuery& query)
{
    Bookmark dogEar;
    dogEar.setKey(query.value(0).toLongLong());
    dogEar.setPageKey(query.value(1).toInt());
    dogEar.setContentId(query.value(2).toString());
    dogEar.setVolumeId(query.value(3).toString());
    dogEar.setText(query.value(4).toString());
    dogEar.setChapterIndex(query.value(5).toInt());
    dogEar.setOffset(query.value(6).toInt());
    dogEar.setExtraData(query.value(7).toString());
    dogEar.setProgress(query.value(8).toDouble());
    dogEar.setDateCreated(dateFromValue(query.value(9)));
    dogEar.setHidden(query.value(10).toBool());
    return dogEar;
}

// SQLite's own text for a damaged file ("database disk image is malformed
// Unable to execute statement") tells a person nothing of what to do.
QString forPeople(const QString& path, const QString& message)
{
    if (message.contains(QLatin1String("malformed"))
        || message.contains(QLatin1String("not a database")))
        return QStringLiteral("%1 is damaged and cannot be read as a library; put back a copy, "
                              "or move it away and import the comics again")
            .arg(path);
    return QStringLiteral("%1: %2").arg(path, message);
}

// A statement that failed: its error, in words for people.
bool failed(const QSqlQuery& query)
{
    return fail(forPeople(openPath, query.lastError().text()));
}

// Runs the statement with these values; false with the error when it fails.
bool run(QSqlQuery& query, const QVariantList& values)
{
    for (const QVariant& value : values)
        query.addBindValue(value);
    return query.exec() || failed(query);
}

// Runs statements in one transaction: all of them, or none when one fails.
template <typename Statements> bool transaction(Statements statements)
{
    QSqlDatabase db = database();
    if (!db.transaction())
        return fail(forPeople(openPath, db.lastError().text()));
    if (statements() && db.commit())
        return true;
    if (lastMessage().isEmpty())
        fail(forPeople(openPath, db.lastError().text()));
    db.rollback();
    return false;
}

// Runs one write statement in a transaction of its own.
bool write(const QString& sql, const QVariantList& values)
{
    if (!begin())
        return false;
    return transaction([&] {
        QSqlQuery query = statement(sql);
        return run(query, values);
    });
}

void removeFiles(const QString& path)
{
    for (const char* suffix : { "", "-wal", "-shm", "-journal" })
        QFile::remove(path + QLatin1String(suffix));
}

} // namespace

QString Library::defaultPath()
{
    // The user's data folder, as the XDG base directories name it.
    QString data = QFile::decodeName(qgetenv("XDG_DATA_HOME"));
    if (data.isEmpty())
        data = QDir::homePath() + QStringLiteral("/.local/share");
    return data + QStringLiteral("/tamber/library.sqlite");
}

QString Library::lastError()
{
    return lastMessage();
}

bool Library::open(const QString& path)
{
    close();
    lastMessage().clear();

    const QFileInfo info(path);
    if (!path.isEmpty() && !info.exists() && !QDir().mkpath(info.absolutePath()))
        return fail(QStringLiteral("%1: cannot make the folder %2").arg(path, info.absolutePath()));
    QString problem;
    if (!LibraryFile::check(path, &problem))
        return fail(problem);
    const bool isNew = !info.exists();

    bool ok = false;
    QString message;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        if (!db.open())
            message = db.lastError().text();
        else if (!(ok = LibrarySchema::prepare(db, &message)))
            db.close();
    }
    if (ok) {
        openPath = path;
        return true;
    }
    QSqlDatabase::removeDatabase(connectionName);
    // A file that this call created is taken away again.
    if (isNew)
        removeFiles(path);
    return fail(forPeople(path, message));
}

void Library::close()
{
    if (!QSqlDatabase::contains(connectionName))
        return;
    preparedStatements().clear();
    database().close();
    QSqlDatabase::removeDatabase(connectionName);
    openPath.clear();
}

bool Library::isOpen()
{
    return QSqlDatabase::contains(connectionName) && database().isOpen();
}

QString Library::path()
{
    return openPath;
}

bool Library::storeBook(const Volume& volume, const QVector<Pagelet>& pages)
{
    if (!begin())
        return false;
    return transaction([&] {
        // The reading position and status belong to the reader, not to the
        // file: a re-import leaves them as they were.
        QSqlQuery book = statement(QStringLiteral(
            "INSERT INTO volumes (id, title, author, description, mime_type, date, content_type,"
            " user_id, image_id, page_count) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"
            " ON CONFLICT (id) DO UPDATE SET title = excluded.title, author = excluded.author,"
            " description = excluded.description, mime_type = excluded.mime_type,"
            " date = excluded.date, content_type = excluded.content_type,"
            " user_id = excluded.user_id, image_id = excluded.image_id,"
            " page_count = excluded.page_count"));
        const QVariant title = volume.attribute(ATTRIBUTE_TITLE).isValid()
            ? attributeValue(volume, ATTRIBUTE_TITLE)
            : QVariant(volume.getTitle());
        if (!run(book,
                { text(volume.getId()), title, attributeValue(volume, ATTRIBUTE_ATTRIBUTION),
                    attributeValue(volume, ATTRIBUTE_DESCRIPTION),
                    attributeValue(volume, ATTRIBUTE_MIME_TYPE),
                    dateValue(volume.attribute(ATTRIBUTE_DATE).toDateTime()),
                    text(volume.getContentType()), text(volume.getUserID()),
                    text(volume.getImageId()), volume.pageCount() }))
            return false;
        QSqlQuery oldPages = statement(QStringLiteral("DELETE FROM pages WHERE book_id = ?"));
        if (!run(oldPages, { text(volume.getId()) }))
            return false;
        QSqlQuery page = statement(QStringLiteral("INSERT INTO pages (book_id, id, volume_index,"
                                                  " title, content_type, mime_type, user_id,"
                                                  " image_id) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
        for (const Pagelet& record : pages) {
            if (!run(page,
                    { text(record.getBookId()), text(record.getId()), record.getVolumeIndex(),
                        text(record.getTitle()), text(record.getContentType()),
                        attributeValue(record, ATTRIBUTE_MIME_TYPE), text(record.getUserID()),
                        text(record.getImageId()) }))
                return false;
        }
        return true;
    });
}

QList<Volume> Library::books()
{
    QList<Volume> result;
    if (!begin())
        return result;
    QSqlQuery query = statement(QStringLiteral("SELECT %1 FROM volumes ORDER BY title COLLATE"
                                               " NOCASE, id")
                                    .arg(QLatin1String(volumeColumns)));
    if (!run(query, {}))
        return result;
    while (query.next())
        result << volumeFromQuery(query);
    // A damaged page shows only when the walk reaches it.
    if (query.lastError().isValid()) {
        failed(query);
        result.clear();
    }
    query.finish();
    return result;
}

Volume Library::book(const QString& id)
{
    if (!begin())
        return Volume();
    QSqlQuery query = statement(
        QStringLiteral("SELECT %1 FROM volumes WHERE id = ?").arg(QLatin1String(volumeColumns)));
    Volume volume;
    if (run(query, { text(id) }) && query.next())
        volume = volumeFromQuery(query);
    query.finish();
    return volume;
}

QVector<Pagelet> Library::pages(const QString& bookId)
{
    QVector<Pagelet> result;
    if (!begin())
        return result;
    QSqlQuery query
        = statement(QStringLiteral("SELECT id, book_id, volume_index, title, content_type,"
                                   " mime_type, user_id, image_id FROM pages WHERE book_id = ?"
                                   " ORDER BY volume_index, row"));
    if (!run(query, { text(bookId) }))
        return result;
    while (query.next()) {
        Pagelet page;
        page.setId(query.value(0));
        page.setBookId(query.value(1));
        page.setVolumeIndex(query.value(2).toInt());
        page.setTitle(query.value(3));
        page.setContentType(query.value(4));
        if (!query.isNull(5))
            page.setAttribute(ATTRIBUTE_MIME_TYPE, query.value(5).toString());
        page.setUserID(query.value(6));
        page.setImageId(query.value(7));
        result << page;
    }
    query.finish();
    return result;
}

bool Library::updateBookmark(
    const QString& volumeId, const QString& pageId, int percent, const QDateTime& date)
{
    return write(QStringLiteral("UPDATE volumes SET bookmarked_page_id = ?, percent_read = ?,"
                                " bookmark_date = ? WHERE id = ?"),
        { text(pageId), percent, dateValue(date), text(volumeId) });
}

bool Library::updateReadingStatus(const QString& volumeId, int status)
{
    return write(QStringLiteral("UPDATE volumes SET read_status = ? WHERE id = ?"),
        { status, text(volumeId) });
}

bool Library::readingState(const QString& volumeId, ReadingState* state)
{
    if (!begin())
        return false;
    QSqlQuery query = statement(QStringLiteral(
        "SELECT bookmarked_page_id, percent_read, bookmark_date, read_status FROM volumes"
        " WHERE id = ?"));
    const bool found = run(query, { text(volumeId) }) && query.next();
    if (found) {
        state->pageId = query.value(0).toString();
        state->percent = query.value(1).toInt();
        state->date = dateFromValue(query.value(2));
        state->status = query.value(3).toInt();
    }
    query.finish();
    return found;
}

bool Library::setReadingState(const QString& volumeId, const ReadingState& state)
{
    return write(QStringLiteral("UPDATE volumes SET bookmarked_page_id = ?, percent_read = ?,"
                                " bookmark_date = ?, read_status = ? WHERE id = ?"),
        { text(state.pageId), state.percent, dateValue(state.date), state.status,
            text(volumeId) });
}

QList<Bookmark> Library::dogEars(const QString& volumeId)
{
    QList<Bookmark> result;
    if (!begin())
        return result;
    QSqlQuery query
        = statement(QStringLiteral("SELECT id, page_key, content_id, volume_id, text,"
                                   " chapter_index, page_offset, extra_data, progress, date,"
                                   " hidden FROM dog_ears WHERE book_id = ? ORDER BY id"));
    if (!run(query, { text(volumeId) }))
        return result;
    while (query.next())
        result << dogEarFromQuery(query);
    query.finish();
    return result;
}

qint64 Library::addDogEar(const QString& bookId, const Bookmark& dogEar)
{
    if (!begin())
        return 0;
    qint64 key = 0;
    transaction([&] {
        QSqlQuery query = statement(
            QStringLiteral("INSERT INTO dog_ears (book_id, page_key, content_id, volume_id, text,"
                           " chapter_index, page_offset, extra_data, progress, date, hidden)"
                           " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
        if (!run(query,
                { text(bookId), dogEar.getPageKey(), text(dogEar.getContentId()),
                    text(dogEar.getVolumeId()), text(dogEar.getText()), dogEar.getChapterIndex(),
                    dogEar.getOffset(), text(dogEar.getExtraData()), dogEar.getProgress(),
                    dateValue(dogEar.getDateCreated()), dogEar.isHidden() }))
            return false;
        key = query.lastInsertId().toLongLong();
        return true;
    });
    return lastMessage().isEmpty() ? key : 0;
}

bool Library::removeDogEars(const QList<qint64>& keys)
{
    if (!begin())
        return false;
    return transaction([&] {
        QSqlQuery query = statement(QStringLiteral("DELETE FROM dog_ears WHERE id = ?"));
        for (qint64 key : keys) {
            if (!run(query, { key }))
                return false;
        }
        return true;
    });
}
