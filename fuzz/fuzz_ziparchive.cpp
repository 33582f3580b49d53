// SPDX-License-Identifier: MIT
// The ZIP archive over arbitrary bytes written as a .cbz: opened, listed, and
// every entry read and decoded.

#include "ComicZipArchive.h"
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    FuzzSupport::initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QString path = FuzzSupport::scratchFile(QStringLiteral("cbz"));
    if (!FuzzSupport::write(path, data, size))
        return 0;
    ComicZipArchive archive(path);
    for (const QString& name : archive.files()) {
        if (FuzzSupport::fitsBudget(archive.raw(name)))
            archive.data(name);
    }
    return 0;
}
