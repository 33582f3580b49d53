// SPDX-License-Identifier: MIT
// The host's record types: shared value classes with a detaching private part.

#include "Attributes.h"
#include "QtCompat.h"
#include "Bookmark.h"
#include "Content.h"
#include "Pagelet.h"
#include "Price.h"
#include "RecordObject.h"
#include "ShelfContent.h"
#include "Volume.h"

#include <QSharedData>

const QString ATTRIBUTE_TITLE = QStringLiteral("title");
const QString ATTRIBUTE_DESCRIPTION = QStringLiteral("description");
const QString ATTRIBUTE_ATTRIBUTION = QStringLiteral("attribution");
const QString ATTRIBUTE_MIME_TYPE = QStringLiteral("mimeType");
const QString ATTRIBUTE_DATE = QStringLiteral("date");

RecordObject::RecordObject() = default;
RecordObject::~RecordObject() = default;

ShelfContent::ShelfContent() = default;

Price::Price()
    : amount(0.0)
{
}

Price::~Price() = default;

class ContentData : public QSharedData
{
public:
    QString id;
    QString title;
    QString bookId;
    QString contentType;
    int volumeIndex = 0;
    QString imageId;
    QString userId;
    QVariantMap attributes;
    int readStatus = 0;
    int pageCount = 0;
    QString bookmarkedPageId;
    int percentRead = 0;
    Price price;
};

Content::Content()
    : d(new ContentData)
{
}

Content::Content(const Content& other) = default;
Content& Content::operator=(const Content& other) = default;
Content::~Content() = default;

QString Content::getId() const
{
    return d->id;
}

void Content::setId(const QVariant& id)
{
    d->id = id.toString();
}

void Content::setTitle(const QVariant& title)
{
    d->title = title.toString();
}

void Content::setBookId(const QVariant& bookId)
{
    d->bookId = bookId.toString();
}

void Content::setContentType(const QVariant& contentType)
{
    d->contentType = contentType.toString();
}

void Content::setVolumeIndex(const QVariant& volumeIndex)
{
    d->volumeIndex = volumeIndex.toInt();
}

void Content::setImageId(const QVariant& imageId)
{
    d->imageId = imageId.toString();
}

void Content::setUserID(const QVariant& userId)
{
    d->userId = userId.toString();
}

QString Content::getTitle() const
{
    return d->title;
}

QString Content::getBookId() const
{
    return d->bookId;
}

int Content::getVolumeIndex() const
{
    return d->volumeIndex;
}

QString Content::getContentType() const
{
    return d->contentType;
}

QString Content::getImageId() const
{
    return d->imageId;
}

QString Content::getUserID() const
{
    return d->userId;
}

QVariant Content::attribute(const QString& name) const
{
    return d->attributes.value(name);
}

QVariantMap Content::attributes() const
{
    return d->attributes;
}

int Content::readStatus() const
{
    return d->readStatus;
}

void Content::setReadStatus(int status)
{
    d->readStatus = status;
}

bool Content::isFinished() const
{
    return d->readStatus == 2;
}

void Content::setAttributeValue(const QString& name, const QVariant& value)
{
    d->attributes.insert(name, value);
}

Volume::Volume() = default;
Volume::~Volume() = default;

void Volume::setAttribute(const QString& name, const QVariant& value)
{
    setAttributeValue(name, value);
}

int Volume::pageCount() const
{
    return d->pageCount;
}

void Volume::setPageCount(int count)
{
    d->pageCount = count;
}

QString Volume::bookmarkedPageId() const
{
    return d->bookmarkedPageId;
}

void Volume::setBookmarkedPageId(const QString& pageId)
{
    d->bookmarkedPageId = pageId;
}

int Volume::percentRead() const
{
    return d->percentRead;
}

void Volume::setPercentRead(int percent)
{
    d->percentRead = percent;
}

Pagelet::Pagelet() = default;
Pagelet::~Pagelet() = default;

QString Pagelet::getId() const
{
    return Content::getId();
}

void Pagelet::setAttribute(const QString& name, const QVariant& value)
{
    setAttributeValue(name, value);
}

class BookmarkData : public QSharedData
{
public:
    qint64 key = 0;
    int pageKey = 0;
    QString extraData;
    bool hidden = false;
    QString volumeId;
    QString contentId;
    QString text;
    int chapterIndex = 0;
    int offset = 0;
    double progress = 0.0;
    QDateTime dateCreated;
};

Bookmark::Bookmark()
    : d(new BookmarkData)
{
}

Bookmark::Bookmark(const Bookmark& other) = default;
Bookmark& Bookmark::operator=(const Bookmark& other) = default;
Bookmark::~Bookmark() = default;

QString Bookmark::getExtraData() const
{
    return d->extraData;
}
void Bookmark::setExtraData(const QString& extraData)
{
    d->extraData = extraData;
}
bool Bookmark::isHidden() const
{
    return d->hidden;
}
void Bookmark::setHidden(bool hidden)
{
    d->hidden = hidden;
}
qint64 Bookmark::key() const
{
    return d->key;
}
void Bookmark::setKey(qint64 key)
{
    d->key = key;
}
int Bookmark::getPageKey() const
{
    return d->pageKey;
}
void Bookmark::setPageKey(int key)
{
    d->pageKey = key;
}
QString Bookmark::getVolumeId() const
{
    return d->volumeId;
}
void Bookmark::setVolumeId(const QString& volumeId)
{
    d->volumeId = volumeId;
}
QString Bookmark::getContentId() const
{
    return d->contentId;
}
void Bookmark::setContentId(const QString& contentId)
{
    d->contentId = contentId;
}
QString Bookmark::getText() const
{
    return d->text;
}
void Bookmark::setText(const QString& text)
{
    d->text = text;
}
int Bookmark::getChapterIndex() const
{
    return d->chapterIndex;
}
void Bookmark::setChapterIndex(int index)
{
    d->chapterIndex = index;
}
int Bookmark::getOffset() const
{
    return d->offset;
}
void Bookmark::setOffset(int offset)
{
    d->offset = offset;
}
double Bookmark::getProgress() const
{
    return d->progress;
}
void Bookmark::setProgress(double progress)
{
    d->progress = progress;
}
QDateTime Bookmark::getDateCreated() const
{
    return d->dateCreated;
}
void Bookmark::setDateCreated(const QDateTime& date)
{
    d->dateCreated = date;
}
