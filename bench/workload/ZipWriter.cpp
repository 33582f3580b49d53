// SPDX-License-Identifier: MIT
#include "ZipWriter.h"

#include <QFile>

#include <zip.h>

ZipWriter::ZipWriter(const QString& path)
{
    int error = 0;
    archive = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
}

ZipWriter::~ZipWriter()
{
    if (archive)
        zip_discard(archive);
}

bool ZipWriter::add(const QByteArray& name, const QByteArray& bytes)
{
    if (!archive)
        return false;
    if (name.endsWith('/'))
        return zip_dir_add(archive, name.constData(), ZIP_FL_ENC_UTF_8) >= 0;
    contents << bytes;
    zip_source_t* source = zip_source_buffer(
        archive, contents.last().constData(), zip_uint64_t(contents.last().size()), 0);
    if (!source)
        return false;
    if (zip_file_add(archive, name.constData(), source, ZIP_FL_ENC_UTF_8) < 0) {
        zip_source_free(source);
        return false;
    }
    return true;
}

bool ZipWriter::addFile(const QByteArray& name, const QString& path)
{
    if (!archive)
        return false;
    zip_source_t* source
        = zip_source_file(archive, QFile::encodeName(path).constData(), 0, 0);
    if (!source)
        return false;
    if (zip_file_add(archive, name.constData(), source, ZIP_FL_ENC_UTF_8) < 0) {
        zip_source_free(source);
        return false;
    }
    return true;
}

bool ZipWriter::close()
{
    if (!archive)
        return false;
    const bool ok = zip_close(archive) == 0;
    if (!ok)
        zip_discard(archive);
    archive = nullptr;
    contents.clear();
    return ok;
}
