// SPDX-License-Identifier: MIT
#ifndef COMICSREADERPARSER_H
#define COMICSREADERPARSER_H

#include "ParserInterface.h"

// Finds and orders the pages of a comic and announces its records.
class ComicsReaderParser : public ParserInterface
{
    Q_OBJECT

public:
    ComicsReaderParser();
    ~ComicsReaderParser() override;

    void parse(const QString& path) override;
    void parseCoverImage(const Volume& volume) override;

    // Whether name ends with the name of an image format Qt can read, and is
    // not inside a "__MACOSX/" folder.
    static bool isSupportedImage(const QString& name);
};

#endif
