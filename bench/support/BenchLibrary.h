// SPDX-License-Identifier: MIT
#ifndef BENCHLIBRARY_H
#define BENCHLIBRARY_H

#include "TestSupport.h"
#include "Volume.h"

#include <QString>

// A library file of its own in a temporary folder, open while this lives,
// into which comics are imported in this process, as the host does: the
// plug-in's parser, its records stored as they are announced.
class BenchLibrary
{
public:
    BenchLibrary();
    ~BenchLibrary();

    bool isOpen() const;
    QString error() const { return message; }
    // The stored book; an empty record when the file gave no pages.
    Volume import(const QString& path);

    BenchLibrary(const BenchLibrary&) = delete;
    BenchLibrary& operator=(const BenchLibrary&) = delete;

private:
    TestSupport::TemporaryDir dir;
    QString message;
};

#endif
