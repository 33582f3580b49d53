#include "ComicArchive.h"

ComicArchive::ComicArchive(const QString&) {}

ComicArchive::~ComicArchive() = default;
