// SPDX-License-Identifier: MIT
#ifndef TAMBER_QTCOMPAT_H
#define TAMBER_QTCOMPAT_H

// The few places where the device's Qt 4.8 and the desktop's Qt 5 differ, for
// the plug-in, the host stand-in and the tests alike. Everything else is
// written once against what both Qts share.

#include <QDateTime>
#include <QEvent>
#include <QFileInfo>
#include <QString>
#include <QtAlgorithms>
#include <QtGlobal>

#include <algorithm>

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
// Qt 4 makes the string at run time; the text is the same.
#define QStringLiteral(text) QString::fromUtf8(text)
#endif

namespace QtCompat {

#if QT_VERSION < QT_VERSION_CHECK(5, 14, 0)
const QString::SplitBehavior KeepEmptyParts = QString::KeepEmptyParts;
const QString::SplitBehavior SkipEmptyParts = QString::SkipEmptyParts;
#else
const Qt::SplitBehavior KeepEmptyParts = Qt::KeepEmptyParts;
const Qt::SplitBehavior SkipEmptyParts = Qt::SkipEmptyParts;
#endif

// Event type 209, which Qt 5 names TouchCancel and Qt 4 leaves unnamed; a
// switch that has it as a case switches on the type as an int.
const int TouchCancel = 209;

// The device sorts with qSort, which Qt 5 deprecates; the comparison is the
// same, and neither sort is stable.
template <typename Iterator, typename LessThan>
void sort(Iterator begin, Iterator end, LessThan lessThan)
{
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    qSort(begin, end, lessThan);
#else
    std::sort(begin, end, lessThan);
#endif
}

// When the file was made, as QFileInfo::created() says; Qt 5 deprecates that
// call and asks for the same answer in steps.
inline QDateTime creationTime(const QFileInfo& info)
{
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    return info.created();
#else
    QDateTime time = info.birthTime();
    if (!time.isValid())
        time = info.metadataChangeTime();
    if (!time.isValid())
        time = info.lastModified();
    return time;
#endif
}

} // namespace QtCompat

#endif
