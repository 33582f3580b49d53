// SPDX-License-Identifier: MIT
#ifndef TAMBER_TRACEJSON_H
#define TAMBER_TRACEJSON_H

#include "Bookmark.h"
#include "Pagelet.h"
#include "TamberGlobal.h"
#include "Volume.h"

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QPair>
#include <QVariant>
#include <QVector>

class QGesture;

// Compact JSON text of the host's values, as the host program prints them.
// Objects keep their members in the order given, so records read the same
// way in every line. Every function returns one complete JSON value.
namespace TraceJson {

using Member = QPair<QString, QByteArray>;

TAMBER_EXPORT QByteArray object(const QVector<Member>& members);
TAMBER_EXPORT QByteArray array(const QVector<QByteArray>& items);
TAMBER_EXPORT QByteArray string(const QString& text);
TAMBER_EXPORT QByteArray strings(const QStringList& texts);
TAMBER_EXPORT QByteArray number(double value);
TAMBER_EXPORT QByteArray boolean(bool value);
TAMBER_EXPORT QByteArray null();

// ISO 8601 in UTC with milliseconds, or null when invalid.
TAMBER_EXPORT QByteArray dateTime(const QDateTime& date);
TAMBER_EXPORT QByteArray volume(const Volume& volume);
TAMBER_EXPORT QByteArray pagelet(const Pagelet& pagelet);
TAMBER_EXPORT QByteArray bookmark(const Bookmark& bookmark);
TAMBER_EXPORT QByteArray image(const QImage& image);
// A TapGesture or SwipeGesture; any other gesture as {"type": its class name}.
TAMBER_EXPORT QByteArray gesture(const QGesture* gesture);
TAMBER_EXPORT QByteArray pageletCount(const QVector<Pagelet>& pagelets);

// Any value a traced call carries: the records and gestures above, date-times,
// strings, numbers, booleans; other values as their text.
TAMBER_EXPORT QByteArray value(const QVariant& value);
TAMBER_EXPORT QByteArray values(const QVariantList& values);

} // namespace TraceJson

#endif
