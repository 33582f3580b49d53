#include "Extractor.h"

#include <archive.h>
#include <archive_entry.h>

#include <stdbool.h>
#include <string.h>

/* Only the formats a comic comes in: a ".cbr" is often a ZIP in fact. Naming
 * them rather than taking all keeps the static device build small. */
static struct archive* new_reader(void)
{
    struct archive* archive = archive_read_new();
    archive_read_support_format_rar(archive);
    archive_read_support_format_rar5(archive);
    archive_read_support_format_zip(archive);
    archive_read_support_format_7zip(archive);
    return archive;
}

static struct archive* opened(struct archive* archive, int status, const char* name, FILE* err)
{
    if (status == ARCHIVE_OK)
        return archive;
    fprintf(err, "unrar: %s: %s\n", name, archive_error_string(archive));
    archive_read_free(archive);
    return NULL;
}

/* The name in the locale's encoding, or UTF-8 where it has no such form. The
 * plug-in hands a listed name back as the very bytes it read, so listing and
 * lookup go through this one function. Folders have no name here. */
static const char* entry_name(struct archive_entry* entry)
{
    if (archive_entry_filetype(entry) == AE_IFDIR)
        return NULL;
    const char* name = archive_entry_pathname(entry);
    return name ? name : archive_entry_pathname_utf8(entry);
}

/* Advances to the next entry; false at the end or on an error, which is then
 * reported. */
static bool next_entry(
    struct archive* archive, const char* name, struct archive_entry** entry, bool* failed, FILE* err)
{
    const int status = archive_read_next_header(archive, entry);
    if (status == ARCHIVE_OK || status == ARCHIVE_WARN)
        return true;
    *failed = status != ARCHIVE_EOF;
    if (*failed)
        fprintf(err, "unrar: %s: %s\n", name, archive_error_string(archive));
    return false;
}

struct archive* extractor_open_file(const char* path, FILE* err)
{
    struct archive* archive = new_reader();
    return opened(archive, archive_read_open_filename(archive, path, 64 * 1024), path, err);
}

struct archive* extractor_open_memory(const void* data, size_t size, FILE* err)
{
    struct archive* archive = new_reader();
    /* libarchive takes the bytes as writable but only reads them. */
    return opened(archive, archive_read_open_memory(archive, (void*)data, size), "(memory)", err);
}

int extractor_list(struct archive* archive, const char* name, FILE* out, FILE* err)
{
    struct archive_entry* entry = NULL;
    bool failed = false;
    while (next_entry(archive, name, &entry, &failed, err)) {
        const char* listed = entry_name(entry);
        if (listed)
            fprintf(out, "%s\n", listed);
    }
    archive_read_free(archive);
    return failed || fflush(out) != 0 ? 1 : 0;
}

int extractor_print(
    struct archive* archive, const char* name, const char* wanted, FILE* out, FILE* err)
{
    struct archive_entry* entry = NULL;
    bool failed = false;
    bool found = false;
    while (!found && next_entry(archive, name, &entry, &failed, err)) {
        const char* listed = entry_name(entry);
        found = listed && strcmp(listed, wanted) == 0;
    }
    if (found) {
        static char buffer[64 * 1024];
        la_ssize_t count;
        while ((count = archive_read_data(archive, buffer, sizeof buffer)) > 0) {
            if (fwrite(buffer, 1, (size_t)count, out) != (size_t)count)
                break;
        }
        if (count < 0) {
            fprintf(err, "unrar: %s: %s: %s\n", name, wanted, archive_error_string(archive));
            failed = true;
        }
    } else if (!failed) {
        fprintf(err, "unrar: %s: no entry named %s\n", name, wanted);
        failed = true;
    }
    archive_read_free(archive);
    return failed || fflush(out) != 0 || ferror(out) ? 1 : 0;
}
