#include "BenchLibrary.h"

#include "ComicsReaderParser.h"
#include "Library.h"

#include <QVector>

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
    QVector<Pagelet> pages;
    Volume stored;
    ComicsReaderParser parser;
    QObject::connect(
        &parser, &ComicsReaderParser::pageletParsed, [&](Pagelet& pagelet) { pages << pagelet; });
    QObject::connect(&parser, &ComicsReaderParser::volumeParsed, [&](Volume& volume, bool, bool) {
        if (Library::storeBook(volume, pages))
            stored = Library::book(volume.getId());
        else
            message = Library::lastError();
    });
    parser.parse(path);
    return stored;
}
