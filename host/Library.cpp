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

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
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

// Runs one write statement in a transaction of its own.
bool write(const QString& sql, const QVariantList& values)
{
    QSqlDatabase db = database();
    if (!db.isOpen() || !db.transaction())
        return false;
    QSqlQuery query = statement(sql);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec() || !db.commit()) {
        db.rollback();
        return false;
    }
    return true;
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

bool Library::open(const QString& path, QString* error)
{
    close();

    const QFileInfo info(path);
    if (!path.isEmpty() && !info.exists() && !QDir().mkpath(info.absolutePath()))
        return fail(
            error, QStringLiteral("%1: cannot make the folder %2").arg(path, info.absolutePath()));
    if (!LibraryFile::check(path, error))
        return false;
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
    return fail(error, QStringLiteral("%1: %2").arg(path, message));
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

bool Library::storeBook(const Volume& volume, const QVector<Pagelet>& pages, QString* error)
{
    if (!isOpen())
        return fail(error, QStringLiteral("no library is open"));
    QSqlDatabase db = database();
    if (!db.transaction())
        return fail(error, db.lastError().text());

    // The reading position and status belong to the reader, not to the file:
    // a re-import leaves them as they were.
    QSqlQuery query = statement(QStringLiteral(
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
    query.addBindValue(text(volume.getId()));
    query.addBindValue(title);
    query.addBindValue(attributeValue(volume, ATTRIBUTE_ATTRIBUTION));
    query.addBindValue(attributeValue(volume, ATTRIBUTE_DESCRIPTION));
    query.addBindValue(attributeValue(volume, ATTRIBUTE_MIME_TYPE));
    query.addBindValue(dateValue(volume.attribute(ATTRIBUTE_DATE).toDateTime()));
    query.addBindValue(text(volume.getContentType()));
    query.addBindValue(text(volume.getUserID()));
    query.addBindValue(text(volume.getImageId()));
    query.addBindValue(volume.pageCount());
    bool ok = query.exec();

    if (ok) {
        query = statement(QStringLiteral("DELETE FROM pages WHERE book_id = ?"));
        query.addBindValue(text(volume.getId()));
        ok = query.exec();
    }
    if (ok) {
        query = statement(QStringLiteral("INSERT INTO pages (book_id, id, volume_index, title,"
                                         " content_type, mime_type, user_id, image_id)"
                                         " VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
        for (const Pagelet& page : pages) {
            query.addBindValue(text(page.getBookId()));
            query.addBindValue(text(page.getId()));
            query.addBindValue(page.getVolumeIndex());
            query.addBindValue(text(page.getTitle()));
            query.addBindValue(text(page.getContentType()));
            query.addBindValue(attributeValue(page, ATTRIBUTE_MIME_TYPE));
            query.addBindValue(text(page.getUserID()));
            query.addBindValue(text(page.getImageId()));
            if (!(ok = query.exec()))
                break;
        }
    }

    if (ok && db.commit())
        return true;
    const QString message
        = query.lastError().isValid() ? query.lastError().text() : db.lastError().text();
    db.rollback();
    return fail(error, message);
}

QList<Volume> Library::books()
{
    QList<Volume> result;
    if (!isOpen())
        return result;
    QSqlQuery query(database());
    if (!query.exec(QStringLiteral("SELECT %1 FROM volumes ORDER BY title COLLATE NOCASE, id")
                        .arg(QLatin1String(volumeColumns))))
        return result;
    while (query.next())
        result << volumeFromQuery(query);
    return result;
}

Volume Library::book(const QString& id)
{
    if (!isOpen())
        return Volume();
    QSqlQuery query = statement(
        QStringLiteral("SELECT %1 FROM volumes WHERE id = ?").arg(QLatin1String(volumeColumns)));
    query.addBindValue(text(id));
    Volume volume;
    if (query.exec() && query.next())
        volume = volumeFromQuery(query);
    query.finish();
    return volume;
}

QVector<Pagelet> Library::pages(const QString& bookId)
{
    QVector<Pagelet> result;
    if (!isOpen())
        return result;
    QSqlQuery query
        = statement(QStringLiteral("SELECT id, book_id, volume_index, title, content_type,"
                                   " mime_type, user_id, image_id FROM pages WHERE book_id = ?"
                                   " ORDER BY volume_index, row"));
    query.addBindValue(text(bookId));
    if (!query.exec())
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

QList<Bookmark> Library::dogEars(const QString& volumeId)
{
    QList<Bookmark> result;
    if (!isOpen())
        return result;
    QSqlQuery query(database());
    query.prepare(QStringLiteral("SELECT id, page_key, content_id, volume_id, text, chapter_index,"
                                 " page_offset, extra_data, progress, date, hidden FROM dog_ears"
                                 " WHERE book_id = ? ORDER BY id"));
    query.addBindValue(text(volumeId));
    if (!query.exec())
        return result;
    while (query.next())
        result << dogEarFromQuery(query);
    return result;
}

qint64 Library::addDogEar(const QString& bookId, const Bookmark& dogEar)
{
    QSqlDatabase db = database();
    if (!db.isOpen() || !db.transaction())
        return 0;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO dog_ears (book_id, page_key, content_id, volume_id,"
                                 " text, chapter_index, page_offset, extra_data, progress, date,"
                                 " hidden) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (const QVariant& value : { QVariant(text(bookId)), QVariant(dogEar.getPageKey()),
             text(dogEar.getContentId()), text(dogEar.getVolumeId()), text(dogEar.getText()),
             QVariant(dogEar.getChapterIndex()), QVariant(dogEar.getOffset()),
             text(dogEar.getExtraData()), QVariant(dogEar.getProgress()),
             dateValue(dogEar.getDateCreated()), QVariant(dogEar.isHidden()) })
        query.addBindValue(value);
    if (!query.exec()) {
        db.rollback();
        return 0;
    }
    const qint64 key = query.lastInsertId().toLongLong();
    if (!db.commit()) {
        db.rollback();
        return 0;
    }
    return key;
}

bool Library::removeDogEars(const QList<qint64>& keys)
{
    QSqlDatabase db = database();
    if (!db.isOpen() || !db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("DELETE FROM dog_ears WHERE id = ?"));
    for (qint64 key : keys) {
        query.addBindValue(key);
        if (!query.exec()) {
            db.rollback();
            return false;
        }
    }
    return db.commit();
}
