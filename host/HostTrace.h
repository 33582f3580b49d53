// SPDX-License-Identifier: MIT
#ifndef TAMBER_HOSTTRACE_H
#define TAMBER_HOSTTRACE_H

#include "HostCompat.h"
#include "TamberGlobal.h"

#include <QString>
#include <QVariantList>

// Watches the calls that the plug-in makes into the host. Off until an observer
// is set. Only the outermost host call is reported: what a host class does
// inside it, and what the host program does on its own behalf (inside a
// HostTrace::Suppress), is the host's business.
class TAMBER_EXPORT HostObserver
{
public:
    virtual ~HostObserver();
    // name is "Class::method"; args hold strings, numbers, booleans, date-times
    // and records (Volume, Pagelet, Bookmark, QImage, ...) as QVariants.
    virtual void hostCall(const QString& name, const QVariantList& args) = 0;
};

namespace HostTrace {

TAMBER_EXPORT void setObserver(HostObserver* observer);
TAMBER_EXPORT HostObserver* observer();

// Put at the top of every traced host operation. Reports the call when it is
// not nested in another traced call or in a Suppress scope.
class TAMBER_EXPORT Call
{
public:
    Call(const char* name, const QVariantList& args = QVariantList());
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
};

// Marks calls that the host program makes on its own behalf.
class TAMBER_EXPORT Suppress
{
public:
    Suppress();
    ~Suppress();
    Suppress(const Suppress&) = delete;
    Suppress& operator=(const Suppress&) = delete;
};

} // namespace HostTrace

#endif
