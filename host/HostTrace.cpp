#include "HostTrace.h"

namespace {
HostObserver* currentObserver = nullptr;
int depth = 0; // traced calls and suppress scopes currently open
}

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
    if (depth == 0 && currentObserver)
        currentObserver->hostCall(QString::fromLatin1(name), args);
    ++depth;
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
