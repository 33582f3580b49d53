// SPDX-License-Identifier: MIT
#ifndef TAMBER_LIBRARY_H
#define TAMBER_LIBRARY_H

#include "Bookmark.h"
#include "Pagelet.h"
#include "TamberGlobal.h"
#include "Volume.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVector>

// The host's library file: one SQLite database behind VolumeManager,
// PageletManager and DogEarManager. One library is open per process.
// A call that fails (false, 0, an empty record or list) says why in
// lastError(), for people, until the next call.
class TAMBER_EXPORT Library
{
public:
    // $XDG_DATA_HOME/tamber/library.sqlite
    static QString defaultPath();

    // Why the last call failed; empty when it did not.
    static QString lastError();

    // Opens the file, creating or migrating its schema. On failure leaves the
    // file as it was.
    static bool open(const QString& path);
    static void close();
    static bool isOpen();
    static QString path();

    // Stores a book and its pages in one transaction, replacing the book's
    // record and pages. The reading position, status and dog ears stay.
    static bool storeBook(const Volume& volume, const QVector<Pagelet>& pages);

    // Every book, ordered by title; none when the file cannot be read (damaged).
    static QList<Volume> books();
    // The stored book; an empty record (empty id) when unknown.
    static Volume book(const QString& id);
    // The book's pages in reading order.
    static QVector<Pagelet> pages(const QString& bookId);

    static bool updateBookmark(
        const QString& volumeId, const QString& pageId, int percent, const QDateTime& date);
    static bool updateReadingStatus(const QString& volumeId, int status);

    // What a reading writes to a book's record, as one value, so that a host
    // can put it back when a reading must leave no trace.
    struct ReadingState
    {
        QString pageId;
        int percent = 0;
        QDateTime date;
        int status = 0;
    };
    // False when the book is not stored.
    static bool readingState(const QString& volumeId, ReadingState* state);
    static bool setReadingState(const QString& volumeId, const ReadingState& state);

    // The book's dog ears in the order they were added.
    static QList<Bookmark> dogEars(const QString& volumeId);
    // Stores a dog ear in the table of bookId; returns its key, 0 on failure.
    static qint64 addDogEar(const QString& bookId, const Bookmark& dogEar);
    // Removes the dog ears with these keys in one transaction.
    static bool removeDogEars(const QList<qint64>& keys);
};

#endif
