// SPDX-License-Identifier: MIT
#include "ElfSectionReader.h"

#include <QFile>
#include <QtEndian>

namespace {

const quint32 sectionTypeNoBits = 8; // SHT_NOBITS: takes no room in the file
const quint16 extendedIndex = 0xffff; // SHN_XINDEX

// Bounds-checked reads of little- or big-endian fields.
class Bytes
{
public:
    Bytes(const QByteArray& data, bool bigEndian)
        : m_data(data)
        , m_bigEndian(bigEndian)
    {
    }

    bool contains(quint64 offset, quint64 size) const
    {
        const quint64 total = quint64(m_data.size());
        return offset <= total && size <= total - offset;
    }

    quint64 unsignedAt(quint64 offset, int size) const
    {
        const uchar* p = reinterpret_cast<const uchar*>(m_data.constData()) + offset;
        switch (size) {
        case 2:
            return m_bigEndian ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p);
        case 4:
            return m_bigEndian ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
        default:
            return m_bigEndian ? qFromBigEndian<quint64>(p) : qFromLittleEndian<quint64>(p);
        }
    }

private:
    const QByteArray& m_data;
    bool m_bigEndian;
};

// Where the fields lie in the file header and in a section header.
struct Layout
{
    int headerSize;
    int sectionTableOffset, sectionEntrySize, sectionCount, stringSectionIndex;
    int wordSize; // of addresses and offsets
    int minimumEntrySize;
    int nameOffset, typeOffset, offsetOffset, sizeOffset, linkOffset;
};

const Layout elf32 = { 52, 0x20, 0x2e, 0x30, 0x32, 4, 40, 0, 4, 16, 20, 24 };
const Layout elf64 = { 64, 0x28, 0x3a, 0x3c, 0x3e, 8, 64, 0, 4, 24, 32, 40 };

struct Section
{
    quint32 name;
    quint32 type;
    quint64 offset;
    quint64 size;
    quint32 link;
};

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

} // namespace

ElfSectionReader::ElfSectionReader(const QString& fileName)
    : m_fileName(fileName)
{
}

bool ElfSectionReader::read(const QByteArray& sectionName, QByteArray* contents)
{
    m_errorString.clear();
    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        m_errorString = file.errorString();
        return false;
    }
    return readFromData(file.readAll(), sectionName, contents, &m_errorString);
}

QString ElfSectionReader::errorString() const
{
    return m_errorString;
}

bool ElfSectionReader::readFromData(
    const QByteArray& data, const QByteArray& sectionName, QByteArray* contents, QString* error)
{
    if (data.size() < 16
        || !data.startsWith("\x7f"
                            "ELF"))
        return fail(error, QStringLiteral("not an ELF file"));
    const char elfClass = data.at(4);
    const char encoding = data.at(5);
    if ((elfClass != 1 && elfClass != 2) || (encoding != 1 && encoding != 2))
        return fail(error, QStringLiteral("an ELF file of unknown class or byte order"));
    const Layout& layout = elfClass == 1 ? elf32 : elf64;
    const Bytes bytes(data, encoding == 2);
    if (!bytes.contains(0, quint64(layout.headerSize)))
        return fail(error, QStringLiteral("truncated ELF header"));

    const quint64 tableOffset
        = bytes.unsignedAt(quint64(layout.sectionTableOffset), layout.wordSize);
    const quint64 entrySize = bytes.unsignedAt(quint64(layout.sectionEntrySize), 2);
    quint64 count = bytes.unsignedAt(quint64(layout.sectionCount), 2);
    quint64 stringIndex = bytes.unsignedAt(quint64(layout.stringSectionIndex), 2);
    if (tableOffset == 0)
        return fail(error, QStringLiteral("the file has no section table"));
    if (entrySize < quint64(layout.minimumEntrySize))
        return fail(error, QStringLiteral("damaged section table"));

    auto sectionAt = [&](quint64 index, Section* section) {
        if (index > (quint64(data.size()) - tableOffset) / entrySize)
            return false;
        const quint64 at = tableOffset + index * entrySize;
        if (!bytes.contains(at, entrySize))
            return false;
        section->name = quint32(bytes.unsignedAt(at + quint64(layout.nameOffset), 4));
        section->type = quint32(bytes.unsignedAt(at + quint64(layout.typeOffset), 4));
        section->offset = bytes.unsignedAt(at + quint64(layout.offsetOffset), layout.wordSize);
        section->size = bytes.unsignedAt(at + quint64(layout.sizeOffset), layout.wordSize);
        section->link = quint32(bytes.unsignedAt(at + quint64(layout.linkOffset), 4));
        return true;
    };

    if (tableOffset > quint64(data.size()))
        return fail(error, QStringLiteral("truncated file: the section table lies past its end"));
    // Files with many sections keep the true counts in the first section header.
    Section first;
    if (!sectionAt(0, &first))
        return fail(error, QStringLiteral("truncated file: the section table lies past its end"));
    if (count == 0)
        count = first.size;
    if (stringIndex == extendedIndex)
        stringIndex = first.link;
    if (count > (quint64(data.size()) - tableOffset) / entrySize)
        return fail(error, QStringLiteral("truncated file: the section table lies past its end"));

    Section strings;
    if (stringIndex >= count || !sectionAt(stringIndex, &strings)
        || !bytes.contains(strings.offset, strings.size))
        return fail(error, QStringLiteral("damaged section name table"));
    const QByteArray names = data.mid(int(strings.offset), int(strings.size));

    for (quint64 index = 0; index < count; ++index) {
        Section section;
        if (!sectionAt(index, &section))
            return fail(error, QStringLiteral("damaged section table"));
        if (section.name >= quint64(names.size()))
            continue;
        const int end = names.indexOf('\0', int(section.name));
        if (end < 0 || names.mid(int(section.name), end - int(section.name)) != sectionName)
            continue;
        if (section.type == sectionTypeNoBits || !bytes.contains(section.offset, section.size))
            return fail(error,
                QStringLiteral("truncated file: section %1 lies past its end")
                    .arg(QString::fromLatin1(sectionName)));
        if (contents)
            *contents = data.mid(int(section.offset), int(section.size));
        return true;
    }
    return fail(error, QStringLiteral("no section %1").arg(QString::fromLatin1(sectionName)));
}
