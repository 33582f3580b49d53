// SPDX-License-Identifier: MIT
#ifndef TAMBER_VOLUME_H
#define TAMBER_VOLUME_H

#include "Content.h"

#include <QMetaType>

// One book of the library.
class TAMBER_EXPORT Volume : public Content
{
public:
    Volume();
    ~Volume() override;

    void setAttribute(const QString& name, const QVariant& value);

    int pageCount() const;
    void setPageCount(int count);

    // Id of the page record at which the reading position was last saved.
    QString bookmarkedPageId() const;
    void setBookmarkedPageId(const QString& pageId);

    int percentRead() const;
    void setPercentRead(int percent);
};

Q_DECLARE_METATYPE(Volume)

#endif
