// SPDX-License-Identifier: MIT
#ifndef TAMBER_ELFSECTIONREADER_H
#define TAMBER_ELFSECTIONREADER_H

#include "TamberGlobal.h"

#include <QByteArray>
#include <QString>

// Reads one named section of an ELF file (32- or 64-bit, either byte order)
// from the file's bytes, without loading it. Every offset is checked against
// the file's size, so a truncated or damaged file is refused, not followed.
class TAMBER_EXPORT ElfSectionReader
{
public:
    explicit ElfSectionReader(const QString& fileName);

    // The section's bytes; false with errorString() set when the file is not
    // ELF, is damaged or has no such section.
    bool read(const QByteArray& sectionName, QByteArray* contents);
    QString errorString() const;

    // The same over bytes already in memory.
    static bool readFromData(const QByteArray& data, const QByteArray& sectionName,
        QByteArray* contents, QString* error);

private:
    QString m_fileName;
    QString m_errorString;
};

#endif
