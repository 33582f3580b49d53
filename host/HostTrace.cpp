// SPDX-License-Identifier: MIT
#include "HostTrace.h"

namespace {
HostObserver* currentObserver = nullptr;
int depth = 0; // traced calls and suppress scopes currently open
} // namespace

HostObserver::~HostObserver() = default;

namespace HostTrace {

void setObserver(HostObserver* observer)
{
    currentObserver = observer;
}

HostObserver* observer()
{
    return currentObserver;
}

Call::Call(const char* name, const QVariantList& args)
{
    // Counted first, so that host calls made by the observer itself are not reported.
    if (++depth == 1 && currentObserver)
        currentObserver->hostCall(QString::fromLatin1(name), args);
}

Call::~Call()
{
    --depth;
}

Suppress::Suppress()
{
    ++depth;
}

Suppress::~Suppress()
{
    --depth;
}

} // namespace HostTrace
