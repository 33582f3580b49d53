// SPDX-License-Identifier: MIT
#include "TraceJson.h"

#include "SwipeGesture.h"
#include "TapGesture.h"

#include "HostCompat.h"

#include <QGesture>
#include <QUrl>

#include <nlohmann/json.hpp>

#include <cmath>
#include <string>

namespace TraceJson {

namespace {

// nlohmann's writer does the escaping and number formatting of single values;
// text that is not UTF-8 (lone surrogates) is written with U+FFFD.
QByteArray scalar(const nlohmann::json& value)
{
    const std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return QByteArray(text.data(), int(text.size()));
}

// An attribute the record does not carry is null, not an empty string.
QByteArray attribute(const Content& record, const QString& name)
{
    const QVariant value = record.attribute(name);
    return value.isValid() ? string(value.toString()) : null();
}

bool isNumber(int type)
{
    switch (type) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
        return true;
    default:
        return false;
    }
}

} // namespace

QByteArray object(const QVector<Member>& members)
{
    QByteArray text("{");
    for (const Member& member : members) {
        if (text.size() > 1)
            text += ',';
        text += string(member.first) + ':' + member.second;
    }
    return text + '}';
}

QByteArray array(const QVector<QByteArray>& items)
{
    QByteArray text("[");
    for (const QByteArray& item : items) {
        if (text.size() > 1)
            text += ',';
        text += item;
    }
    return text + ']';
}

QByteArray string(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return scalar(std::string(utf8.constData(), size_t(utf8.size())));
}

QByteArray strings(const QStringList& texts)
{
    QVector<QByteArray> items;
    for (const QString& text : texts)
        items << string(text);
    return array(items);
}

QByteArray number(double value)
{
    // Whole numbers without a fraction ("2", not "2.0"); NaN and infinities
    // have no JSON form and are null.
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 9.0e15)
        return scalar(static_cast<long long>(value));
    return scalar(value);
}

QByteArray boolean(bool value)
{
    return value ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
}

QByteArray null()
{
    return QByteArrayLiteral("null");
}

QByteArray dateTime(const QDateTime& date)
{
    return date.isValid() ? string(date.toUTC().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz'Z'"))) : null();
}

QByteArray volume(const Volume& volume)
{
    const QVariant title = volume.attribute(ATTRIBUTE_TITLE);
    const QVariant date = volume.attribute(ATTRIBUTE_DATE);
    return object({
        { QStringLiteral("id"), string(volume.getId()) },
        { QStringLiteral("title"), string(title.isValid() ? title.toString() : volume.getTitle()) },
        { QStringLiteral("author"), attribute(volume, ATTRIBUTE_ATTRIBUTION) },
        { QStringLiteral("description"), attribute(volume, ATTRIBUTE_DESCRIPTION) },
        { QStringLiteral("mimeType"), attribute(volume, ATTRIBUTE_MIME_TYPE) },
        { QStringLiteral("date"), date.isValid() ? dateTime(date.toDateTime()) : null() },
        { QStringLiteral("contentType"), string(volume.getContentType()) },
        { QStringLiteral("userId"), string(volume.getUserID()) },
        { QStringLiteral("imageId"), string(volume.getImageId()) },
        { QStringLiteral("pageCount"), number(volume.pageCount()) },
        { QStringLiteral("readStatus"), number(volume.readStatus()) },
        { QStringLiteral("bookmarkedPageId"), string(volume.bookmarkedPageId()) },
        { QStringLiteral("percentRead"), number(volume.percentRead()) },
    });
}

QByteArray pagelet(const Pagelet& pagelet)
{
    return object({
        { QStringLiteral("id"), string(pagelet.getId()) },
        { QStringLiteral("title"), string(pagelet.getTitle()) },
        { QStringLiteral("bookId"), string(pagelet.getBookId()) },
        { QStringLiteral("volumeIndex"), number(pagelet.getVolumeIndex()) },
        { QStringLiteral("contentType"), string(pagelet.getContentType()) },
        { QStringLiteral("mimeType"), attribute(pagelet, ATTRIBUTE_MIME_TYPE) },
        { QStringLiteral("userId"), string(pagelet.getUserID()) },
    });
}

QByteArray bookmark(const Bookmark& bookmark)
{
    return object({
        { QStringLiteral("extraData"), string(bookmark.getExtraData()) },
        { QStringLiteral("hidden"), boolean(bookmark.isHidden()) },
    });
}

QByteArray image(const QImage& image)
{
    return object({
        { QStringLiteral("width"), number(image.width()) },
        { QStringLiteral("height"), number(image.height()) },
        { QStringLiteral("null"), boolean(image.isNull()) },
    });
}

QByteArray gesture(const QGesture* gesture)
{
    if (!gesture)
        return null();
    if (qobject_cast<const TapGesture*>(gesture))
        return object({ { QStringLiteral("type"), string(QStringLiteral("tap")) },
            { QStringLiteral("state"), number(gesture->state()) } });
    if (auto swipe = qobject_cast<const SwipeGesture*>(gesture))
        return object({ { QStringLiteral("type"), string(QStringLiteral("swipe")) },
            { QStringLiteral("horizontal"), number(swipe->horizontalDirection()) },
            { QStringLiteral("vertical"), number(swipe->verticalDirection()) } });
    // DragGesture gives "drag", PinchGesture "pinch".
    QString type = QString::fromLatin1(gesture->metaObject()->className());
    if (type.endsWith(QLatin1String("Gesture")))
        type.chop(7);
    return object({ { QStringLiteral("type"), string(type.toLower()) },
        { QStringLiteral("state"), number(gesture->state()) } });
}

QByteArray pageletCount(const QVector<Pagelet>& pagelets)
{
    return object({ { QStringLiteral("count"), number(pagelets.size()) } });
}

QByteArray value(const QVariant& value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<Volume>())
        return volume(value.value<Volume>());
    if (type == qMetaTypeId<Pagelet>())
        return pagelet(value.value<Pagelet>());
    if (type == qMetaTypeId<Bookmark>())
        return bookmark(value.value<Bookmark>());
    if (type == qMetaTypeId<QVector<Pagelet>>())
        return pageletCount(value.value<QVector<Pagelet>>());
    if (!value.isValid())
        return null();
    // Objects travel as QObject*, gestures among them.
    if (type == QMetaType::QObjectStar) {
        QObject* object = value.value<QObject*>();
        if (auto asGesture = qobject_cast<QGesture*>(object))
            return gesture(asGesture);
        return object ? string(QString::fromLatin1(object->metaObject()->className())) : null();
    }
    switch (type) {
    case QMetaType::QImage:
        return image(value.value<QImage>());
    case QMetaType::QDateTime:
        return dateTime(value.toDateTime());
    case QMetaType::Bool:
        return boolean(value.toBool());
    case QMetaType::QUrl:
        return string(value.toUrl().toString());
    case QMetaType::QStringList:
        return strings(value.toStringList());
    case QMetaType::QVariantList:
        return values(value.toList());
    default:
        break;
    }
    if (isNumber(type))
        return number(value.toDouble());
    if (value.canConvert<QString>())
        return string(value.toString());
    return string(QString::fromLatin1(value.typeName()));
}

QByteArray values(const QVariantList& list)
{
    QVector<QByteArray> items;
    for (const QVariant& item : list)
        items << value(item);
    return array(items);
}

} // namespace TraceJson
