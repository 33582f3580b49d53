#include "ComicArchiveFactory.h"

ComicArchive* ComicArchiveFactory::instance(const QString&)
{
    return nullptr; // placeholder until the archives land
}
