// SPDX-License-Identifier: MIT
#include "ZipFileSource.h"

#include <zip.h>

#include <cerrno>
#include <cstdio>

namespace {

struct FileSource
{
    std::FILE* file = nullptr;
    int openErrno = 0;
    zip_uint64_t size = 0;
    zip_error_t error;
};

zip_int64_t fail(FileSource* source, int zipError, int systemError)
{
    zip_error_set(&source->error, zipError, systemError);
    return -1;
}

zip_int64_t callback(void* state, void* data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto* source = static_cast<FileSource*>(state);
    switch (command) {
    case ZIP_SOURCE_OPEN:
        if (!source->file)
            return fail(source, ZIP_ER_OPEN, source->openErrno);
        return std::fseek(source->file, 0, SEEK_SET) == 0 ? 0 : fail(source, ZIP_ER_SEEK, errno);
    case ZIP_SOURCE_READ: {
        const std::size_t count = std::fread(data, 1, std::size_t(length), source->file);
        if (count < length && std::ferror(source->file))
            return fail(source, ZIP_ER_READ, errno);
        return zip_int64_t(count);
    }
    case ZIP_SOURCE_CLOSE:
        return 0;
    case ZIP_SOURCE_STAT: {
        // A file that is not there is told apart, as zip_open tells it.
        if (!source->file) {
            return fail(source, source->openErrno == ENOENT ? ZIP_ER_NOENT : ZIP_ER_OPEN,
                source->openErrno);
        }
        auto* stat = static_cast<zip_stat_t*>(data);
        zip_stat_init(stat);
        stat->size = source->size;
        stat->valid |= ZIP_STAT_SIZE;
        return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&source->error, data, length);
    case ZIP_SOURCE_SEEK: {
        const zip_int64_t offset = zip_source_seek_compute_offset(
            zip_uint64_t(ftello(source->file)), source->size, data, length, &source->error);
        if (offset < 0)
            return -1;
        return fseeko(source->file, off_t(offset), SEEK_SET) == 0
            ? 0
            : fail(source, ZIP_ER_SEEK, errno);
    }
    case ZIP_SOURCE_TELL:
        return zip_int64_t(ftello(source->file));
    case ZIP_SOURCE_FREE:
        if (source->file)
            std::fclose(source->file);
        zip_error_fini(&source->error);
        delete source;
        return 0;
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
            ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL,
            ZIP_SOURCE_SUPPORTS, -1);
    default:
        return fail(source, ZIP_ER_OPNOTSUPP, 0);
    }
}

} // namespace

namespace ZipFileSource {

zip_t* open(const QByteArray& path, int* error)
{
    auto* state = new FileSource;
    zip_error_init(&state->error);
    state->file = std::fopen(path.constData(), "rb");
    state->openErrno = errno;
    if (state->file && fseeko(state->file, 0, SEEK_END) == 0) {
        const off_t end = ftello(state->file);
        state->size = end > 0 ? zip_uint64_t(end) : 0;
    }

    // An empty file is an archive without entries, as older libzip releases
    // read it; libzip 1.7 calls it "not a ZIP".
    if (state->file && state->size == 0) {
        callback(state, nullptr, 0, ZIP_SOURCE_FREE);
        *error = 0;
        return nullptr;
    }

    zip_error_t sourceError;
    zip_error_init(&sourceError);
    zip_source_t* source = zip_source_function_create(callback, state, &sourceError);
    if (!source) {
        *error = zip_error_code_zip(&sourceError);
        zip_error_fini(&sourceError);
        callback(state, nullptr, 0, ZIP_SOURCE_FREE);
        return nullptr;
    }
    zip_t* archive = zip_open_from_source(source, 0, &sourceError);
    *error = archive ? 0 : zip_error_code_zip(&sourceError);
    if (!archive)
        zip_source_free(source);
    zip_error_fini(&sourceError);
    return archive;
}

} // namespace ZipFileSource
