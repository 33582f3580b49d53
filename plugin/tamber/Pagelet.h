// SPDX-License-Identifier: MIT
#ifndef TAMBER_PAGELET_H
#define TAMBER_PAGELET_H

#include "Content.h"

#include <QMetaType>
#include <QVector>

// One page of a comic (a chapter of a book in general).
class TAMBER_EXPORT Pagelet : public Content
{
public:
    Pagelet();
    ~Pagelet() override;

    QString getId() const override;
    void setAttribute(const QString& name, const QVariant& value);
};

Q_DECLARE_METATYPE(Pagelet)

#endif
