// SPDX-License-Identifier: MIT
#include "BenchLibrary.h"

#include "Library.h"
#include "ParsedBook.h"

BenchLibrary::BenchLibrary()
{
    if (!dir.isValid())
        message = QStringLiteral("cannot make a temporary folder");
    else if (!Library::open(dir.filePath(QStringLiteral("library.sqlite"))))
        message = Library::lastError();
}

BenchLibrary::~BenchLibrary()
{
    Library::close();
}

bool BenchLibrary::isOpen() const
{
    return Library::isOpen();
}

Volume BenchLibrary::import(const QString& path)
{
    ParsedBook parsed;
    ParsedBook::parse(path, &parsed);
    if (!parsed.parsed)
        return Volume();
    if (!Library::storeBook(parsed.volume, parsed.pages)) {
        message = Library::lastError();
        return Volume();
    }
    return Library::book(parsed.volume.getId());
}
