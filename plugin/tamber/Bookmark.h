// SPDX-License-Identifier: MIT
#ifndef TAMBER_BOOKMARK_H
#define TAMBER_BOOKMARK_H

#include "QtCompat.h"
#include "RecordObject.h"

#include <QDateTime>
#include <QMetaType>
#include <QSharedDataPointer>
#include <QString>

class BookmarkData;

static const QString VOLUME_ID = QStringLiteral("VolumeId");
static const QString DATE = QStringLiteral("Date");
static const QString STATE = QStringLiteral("State");

// A reading position or a dog ear. For a comic's dog ear the extra data is the
// page index in decimal.
class TAMBER_EXPORT Bookmark : public RecordObject
{
public:
    Bookmark();
    Bookmark(const Bookmark& other);
    Bookmark& operator=(const Bookmark& other);
    ~Bookmark() override;

    QString getExtraData() const;
    void setExtraData(const QString& extraData);
    bool isHidden() const;
    void setHidden(bool hidden);

    // Store key of the record; 0 for a bookmark that was never stored.
    qint64 key() const;
    void setKey(qint64 key);

    // The key that addDogEar was given (a comic's page index).
    int getPageKey() const;
    void setPageKey(int key);

    QString getVolumeId() const;
    void setVolumeId(const QString& volumeId);
    QString getContentId() const;
    void setContentId(const QString& contentId);
    QString getText() const;
    void setText(const QString& text);
    int getChapterIndex() const;
    void setChapterIndex(int index);
    int getOffset() const;
    void setOffset(int offset);
    double getProgress() const;
    void setProgress(double progress);
    QDateTime getDateCreated() const;
    void setDateCreated(const QDateTime& date);

private:
    QSharedDataPointer<BookmarkData> d;
};

Q_DECLARE_METATYPE(Bookmark)

#endif
