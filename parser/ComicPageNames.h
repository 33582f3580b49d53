// SPDX-License-Identifier: MIT
#ifndef COMICPAGENAMES_H
#define COMICPAGENAMES_H

#include <QString>
#include <QStringList>

// The page entry names of the comic at path, in reading order: the supported
// images among its entries, each once, sorted by pageNameLessThan. Empty when
// the file cannot be read or holds no page. A "file://" prefix is allowed.
QStringList comicPageNames(const QString& path);

// Compares the page stems of two entries: the file name up to its first dot,
// directories ignored, code unit by code unit.
bool pageNameLessThan(const QString& a, const QString& b);

#endif
