// SPDX-License-Identifier: MIT
// The in-memory archive over arbitrary bytes: decoded once, then handed out
// under any name.

#include "FuzzSupport.h"
#include "QByteArrayArchive.h"

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzSupport::initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size));
    if (!FuzzSupport::fitsBudget(bytes))
        return 0;
    QByteArrayArchive archive(bytes);
    if (archive.files() != QStringList(QString()))
        __builtin_trap();
    const QImage image = archive.data(QString());
    if (archive.data(QStringLiteral("any name")) != image)
        __builtin_trap();
    return 0;
}
