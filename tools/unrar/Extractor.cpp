#include "Extractor.h"

#include <archive.h>
#include <archive_entry.h>

#include <cstring>

namespace {

struct archive* newReader()
{
    struct archive* archive = archive_read_new();
    archive_read_support_format_rar(archive);
    archive_read_support_format_rar5(archive);
    return archive;
}

struct archive* opened(struct archive* archive, int status, const char* name, std::FILE* err)
{
    if (status == ARCHIVE_OK)
        return archive;
    std::fprintf(err, "unrar: %s: %s\n", name, archive_error_string(archive));
    archive_read_free(archive);
    return nullptr;
}

// The name in the locale's encoding, or UTF-8 where it has no such form. The
// plug-in hands a listed name back as the very bytes it read, so listing and
// lookup go through this one function.
const char* entryName(struct archive_entry* entry)
{
    const char* name = archive_entry_pathname(entry);
    return name ? name : archive_entry_pathname_utf8(entry);
}

// Advances to the next entry; false at the end or on an error, which is then
// reported.
bool nextEntry(struct archive* archive, const char* name, struct archive_entry** entry,
    bool* failed, std::FILE* err)
{
    const int status = archive_read_next_header(archive, entry);
    if (status == ARCHIVE_OK || status == ARCHIVE_WARN)
        return true;
    *failed = status != ARCHIVE_EOF;
    if (*failed)
        std::fprintf(err, "unrar: %s: %s\n", name, archive_error_string(archive));
    return false;
}

} // namespace

namespace Extractor {

struct archive* openFile(const char* path, std::FILE* err)
{
    struct archive* archive = newReader();
    return opened(archive, archive_read_open_filename(archive, path, 64 * 1024), path, err);
}

struct archive* openMemory(const void* data, std::size_t size, std::FILE* err)
{
    struct archive* archive = newReader();
    return opened(archive, archive_read_open_memory(archive, data, size), "(memory)", err);
}

int list(struct archive* archive, const char* name, std::FILE* out, std::FILE* err)
{
    struct archive_entry* entry = nullptr;
    bool failed = false;
    while (nextEntry(archive, name, &entry, &failed, err)) {
        if (const char* listed = entryName(entry))
            std::fprintf(out, "%s\n", listed);
    }
    archive_read_free(archive);
    return failed || std::fflush(out) != 0 ? 1 : 0;
}

int print(
    struct archive* archive, const char* name, const char* wanted, std::FILE* out, std::FILE* err)
{
    struct archive_entry* entry = nullptr;
    bool failed = false;
    bool found = false;
    while (!found && nextEntry(archive, name, &entry, &failed, err)) {
        const char* listed = entryName(entry);
        found = listed && std::strcmp(listed, wanted) == 0;
    }
    if (found) {
        static char buffer[64 * 1024];
        la_ssize_t count;
        while ((count = archive_read_data(archive, buffer, sizeof buffer)) > 0) {
            if (std::fwrite(buffer, 1, size_t(count), out) != size_t(count))
                break;
        }
        if (count < 0) {
            std::fprintf(err, "unrar: %s: %s: %s\n", name, wanted, archive_error_string(archive));
            failed = true;
        }
    } else if (!failed) {
        std::fprintf(err, "unrar: %s: no entry named %s\n", name, wanted);
        failed = true;
    }
    archive_read_free(archive);
    return failed || std::fflush(out) != 0 || std::ferror(out) ? 1 : 0;
}

} // namespace Extractor
