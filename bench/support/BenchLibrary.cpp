#include "BenchLibrary.h"

#include "Library.h"
#include "ParsedBook.h"

BenchLibrary::BenchLibrary()
{
    if (dir.isValid())
        Library::open(dir.filePath(QStringLiteral("library.sqlite")), &message);
    else
        message = QStringLiteral("cannot make a temporary folder");
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
    if (!parsed.parsed || !Library::storeBook(parsed.volume, parsed.pages, &message))
        return Volume();
    return Library::book(parsed.volume.getId());
}
