// SPDX-License-Identifier: MIT
#ifndef TAMBER_CONTENT_H
#define TAMBER_CONTENT_H

#include "Attributes.h"
#include "HostConstants.h"
#include "TamberGlobal.h"

#include <QSharedDataPointer>
#include <QString>
#include <QVariant>
#include <QVariantMap>

class ContentData;

// Base of the host's content records (books and pages). An implicitly shared
// value type: copies are cheap and detach on the first write.
class TAMBER_EXPORT Content
{
public:
    Content();
    Content(const Content& other);
    Content& operator=(const Content& other);
    virtual ~Content();

    // The record's identifier.
    virtual QString getId() const;

    void setId(const QVariant& id);
    void setTitle(const QVariant& title);
    void setBookId(const QVariant& bookId);
    void setContentType(const QVariant& contentType);
    void setVolumeIndex(const QVariant& volumeIndex);
    void setImageId(const QVariant& imageId);
    void setUserID(const QVariant& userId);

    QString getTitle() const;
    QString getBookId() const;
    int getVolumeIndex() const;
    QString getContentType() const;
    QString getImageId() const;
    QString getUserID() const;

    QVariant attribute(const QString& name) const;
    QVariantMap attributes() const;

    // Reading status: 1 reading, 2 finished.
    int readStatus() const;
    void setReadStatus(int status);
    bool isFinished() const;

protected:
    void setAttributeValue(const QString& name, const QVariant& value);

    QSharedDataPointer<ContentData> d;
};

#endif
