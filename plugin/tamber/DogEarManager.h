// SPDX-License-Identifier: MIT
#ifndef TAMBER_DOGEARMANAGER_H
#define TAMBER_DOGEARMANAGER_H

#include "Bookmark.h"
#include "TamberGlobal.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

// The host's store of dog ears; one table (book) is open at a time.
class TAMBER_EXPORT DogEarManager : public QObject
{
    Q_OBJECT

public:
    static DogEarManager* sharedInstance();

    // Opens (and with create, makes) the dog-ear table of a book.
    void createTable(const QString& volumeId, bool create);
    bool isTableValid();
    QList<Bookmark> getBookmarks();

    void addDogEar(int key, const QString& contentId, const QString& volumeId, const QString& text,
        int chapterIndex, int offset, const QString& extraData, double progress,
        const QDateTime& date);

    // Removes every dog ear of the open book whose key, as the receivers of
    // getDogEarKey tell it, equals key.
    void removeDogEar(int key);
    void removeDogEar(Bookmark& dogEar);

    // The book whose table is open; empty when none is.
    QString tableVolumeId() const;

signals:
    void getDogEarKey(int& key, const Bookmark& dogEar);

private:
    DogEarManager();

    QString m_volumeId;
};

#endif
