// SPDX-License-Identifier: MIT
#include "ParsedBook.h"

#include "ComicsReaderParser.h"

void ParsedBook::parse(const QString& path, ParsedBook* book)
{
    ComicsReaderParser parser;
    connect(&parser, SIGNAL(pageletParsed(Pagelet&)), book, SLOT(addPage(Pagelet&)),
        Qt::DirectConnection);
    connect(&parser, SIGNAL(volumeParsed(Volume&, bool, bool)), book,
        SLOT(setVolume(Volume&, bool, bool)), Qt::DirectConnection);
    parser.parse(path);
}

void ParsedBook::addPage(Pagelet& pagelet)
{
    pages << pagelet;
}

void ParsedBook::setVolume(Volume& parsedVolume, bool, bool)
{
    volume = parsedVolume;
    parsed = true;
}
