// SPDX-License-Identifier: MIT
#include "ComicZipArchive.h"

#include "QtCompat.h"
#include "ZipFileSource.h"

#include <QDebug>

#include <zip.h>

namespace {

// The entry whose name is exactly these bytes. zip_name_locate compares with
// the names as libzip converts them (a name it takes to be in a code page
// becomes UTF-8), whatever its flags, so the raw names are searched here.
zip_int64_t locate(zip_t* archive, const QByteArray& name)
{
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        const char* raw = zip_get_name(archive, zip_uint64_t(index), ZIP_FL_ENC_RAW);
        if (raw && name == raw)
            return index;
    }
    return -1;
}

} // namespace

ComicZipArchive::ComicZipArchive(const QString& path)
    : ComicArchive(path)
    , archive(nullptr)
{
    QString cleanPath = path;
    cleanPath.remove(QStringLiteral("file://"));

    int error = 0;
    archive = ZipFileSource::open(cleanPath.toUtf8(), &error);
    if (error != 0)
        qDebug() << "ZIP OPEN ERROR: " << error;
}

ComicZipArchive::~ComicZipArchive()
{
    if (archive)
        zip_close(archive);
}

QStringList ComicZipArchive::files()
{
    QStringList names;
    const zip_int64_t count = archive ? zip_get_num_entries(archive, 0) : 0;
    for (zip_int64_t index = 0; index < count; ++index) {
        zip_stat_t stat;
        zip_stat_init(&stat);
        zip_stat_index(archive, zip_uint64_t(index), ZIP_FL_ENC_RAW, &stat);
        // Latin-1 both ways, whatever codec the host sets for C strings, so
        // that a name finds its entry again as the same bytes.
        names << QString::fromLatin1(stat.name);
    }
    return names;
}

QByteArray ComicZipArchive::raw(const QString& name)
{
    const QByteArray entryName = name.toLatin1();
    const zip_int64_t index = archive ? locate(archive, entryName) : -1;

    zip_stat_t stat;
    zip_stat_init(&stat);
    if (index >= 0)
        zip_stat_index(archive, zip_uint64_t(index), 0, &stat);

    // An entry that claims more than the memory limit is not read at all: a
    // header of a few bytes could otherwise claim gigabytes.
    QByteArray bytes;
    zip_int64_t count = -1;
    if (index >= 0 && stat.size <= zip_uint64_t(memoryLimit)) {
        bytes = QByteArray(int(stat.size), '\0');
        if (zip_file_t* file = zip_fopen_index(archive, zip_uint64_t(index), 0)) {
            count = zip_fread(file, bytes.data(), stat.size);
            zip_fclose(file);
        }
    }
    if (count < 1) {
        qDebug() << "WHAT'S THE DEAL?  I GET LENGTH OF " << count << " for filename "
                 << QString::fromLatin1(entryName);
    }
    return bytes;
}

QImage ComicZipArchive::data(const QString& name)
{
    return decode(raw(name));
}
