// SPDX-License-Identifier: MIT
#ifndef ZIPFILESOURCE_H
#define ZIPFILESOURCE_H

#include <QByteArray>

struct zip;

// Opens a ZIP file for libzip through a source of our own over C stdio, so
// that libzip's own file code (stat, fstat and friends, whose versions the
// device's C library lacks) is never linked. The errors are those that
// zip_open gives for the same file: ZIP_ER_NOENT for a missing file,
// ZIP_ER_OPEN for one that cannot be read, and libzip's own for the rest.
namespace ZipFileSource {

// The archive, or null with the libzip error code in error; null with no
// error for an empty file, which holds no entries.
struct zip* open(const QByteArray& path, int* error);

} // namespace ZipFileSource

#endif
