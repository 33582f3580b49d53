// SPDX-License-Identifier: MIT
#ifndef TAMBER_HOSTCOMPAT_H
#define TAMBER_HOSTCOMPAT_H

// Where the device's Qt 4.8 and the desktop's Qt 5 differ, for the host
// stand-in and the tamber program. The plug-in's own differences are in
// QtCompat.h, which this extends.

#include "Pagelet.h"
#include "QtCompat.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QEvent>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QWheelEvent>
#include <QtGlobal>

#include <cstdio>

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
#define QByteArrayLiteral(text) QByteArray(text, int(sizeof(text) - 1))

// The environment calls that Qt 5 added, with their meaning.
inline bool qEnvironmentVariableIsEmpty(const char* name)
{
    return qgetenv(name).isEmpty();
}
inline bool qEnvironmentVariableIsSet(const char* name)
{
    return !qgetenv(name).isNull();
}
inline QString qEnvironmentVariable(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}

// Qt 5 knows containers of known types by itself.
Q_DECLARE_METATYPE(QVector<Pagelet>)
#else
#include <QLoggingCategory>
#endif

namespace HostCompat {

// Qt's messages as both Qts hand them over: the type and the text.
using MessageHandler = void (*)(QtMsgType type, const QString& text);

namespace detail {
inline MessageHandler& handler()
{
    static MessageHandler current = nullptr;
    return current;
}
inline bool& debugShown()
{
    static bool shown = false;
    return shown;
}
// Qt 4 has no logging rules: debug lines are hidden unless asked for, as
// QT_LOGGING_RULES=default.debug=true asks Qt 5.
inline bool debugAskedFor()
{
    const QByteArray rules = qgetenv("QT_LOGGING_RULES");
    return rules.contains("default.debug=true") || rules.contains("*.debug=true");
}
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
inline void forward(QtMsgType type, const char* text)
{
    if (type == QtDebugMsg && !debugShown() && !debugAskedFor())
        return;
    if (handler())
        handler()(type, QString::fromLocal8Bit(text));
    else
        std::fprintf(stderr, "%s\n", text);
}
#else
inline void forward(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (handler())
        handler()(type, text);
    else
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}
#endif
} // namespace detail

// Sends every message that passes the debug filter to handler; null puts
// back Qt's own output.
inline void installMessageHandler(MessageHandler handler)
{
    detail::handler() = handler;
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    qInstallMsgHandler(&detail::forward);
#else
    qInstallMessageHandler(handler ? &detail::forward : nullptr);
#endif
}

// Writes a message as Qt does without a handler.
inline void writeMessage(const QString& text)
{
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}

// Whether qDebug() lines are shown; the environment's rules (under Qt 4,
// QT_LOGGING_RULES with default.debug=true) still take precedence.
inline void showDebugLines(bool shown)
{
    detail::debugShown() = shown;
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    qInstallMsgHandler(&detail::forward);
#else
    QLoggingCategory::setFilterRules(
        shown ? QStringLiteral("default.debug=true") : QStringLiteral("default.debug=false"));
#endif
}

namespace detail {
inline long long& fixedArrival()
{
    static long long time = -1;
    return time;
}
} // namespace detail

// When an input event happened, in milliseconds. Qt 4's events carry no
// time: there it is when the event arrives, unless recorded input that is
// played back fixes it (setArrivalTime).
inline unsigned long eventTime(const QInputEvent* event)
{
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    Q_UNUSED(event);
    if (detail::fixedArrival() >= 0)
        return static_cast<unsigned long>(detail::fixedArrival());
    static QElapsedTimer clock;
    if (!clock.isValid())
        clock.start();
    return static_cast<unsigned long>(clock.elapsed());
#else
    return event->timestamp();
#endif
}

// Under Qt 4, the time at which the events that follow arrived, as recorded;
// a negative time goes back to the clock. Qt 5's events carry their own.
inline void setArrivalTime(long long milliseconds)
{
    detail::fixedArrival() = milliseconds;
}

// The wheel's turn in eighths of a degree, up positive.
inline int wheelAngle(const QWheelEvent* wheel)
{
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    return wheel->orientation() == Qt::Vertical ? wheel->delta() : 0;
#else
    return wheel->angleDelta().y();
#endif
}

// Where the wheel turned, on the screen.
inline QPointF wheelPosition(const QWheelEvent* wheel)
{
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    return QPointF(wheel->globalPos());
#else
    return wheel->globalPosition();
#endif
}

} // namespace HostCompat

#endif
