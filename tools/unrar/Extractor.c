/* SPDX-License-Identifier: MIT */
#include "Extractor.h"

#include "EntryCache.h"

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

/* How many continuation bytes follow a UTF-8 lead byte; -1 if it leads none. */
static int continuations(unsigned char lead)
{
    if (lead < 0x80)
        return 0;
    if (lead >= 0xc2 && lead <= 0xdf)
        return 1;
    if ((lead & 0xf0) == 0xe0)
        return 2;
    if (lead >= 0xf0 && lead <= 0xf4)
        return 3;
    return -1;
}

static bool is_utf8(const unsigned char* text)
{
    while (*text) {
        int follow = continuations(*text++);
        if (follow < 0)
            return false;
        for (; follow > 0; --follow) {
            if ((*text++ & 0xc0) != 0x80)
                return false;
        }
    }
    return true;
}

/* How an entry is listed, and so how it is asked for again: UTF-8 in any
 * locale, since the plug-in reads the listing as UTF-8 and hands a name back
 * as UTF-8. A name stored as Unicode comes as it is; one stored in a code page
 * (bytes that are not UTF-8) has each byte read as Latin-1, as the plug-in
 * reads ZIP names, so that every name has one form. Returns false for a folder
 * (it has no name here) and, with a message, for a name that has no form. */
static bool entry_name(struct archive_entry* entry, char* out, size_t size, FILE* err)
{
    if (archive_entry_filetype(entry) == AE_IFDIR)
        return false;
    const char* name = archive_entry_pathname_utf8(entry);
    if (!name)
        name = archive_entry_pathname(entry);
    if (!name) {
        fprintf(err, "unrar: an entry's name cannot be read in any encoding\n");
        return false;
    }
    const unsigned char* byte = (const unsigned char*)name;
    size_t length = 0;
    if (is_utf8(byte)) {
        length = strlen(name);
        if (length >= size)
            goto too_long;
        memcpy(out, name, length + 1);
        return true;
    }
    for (; *byte; ++byte) {
        if (length + 3 > size)
            goto too_long;
        if (*byte < 0x80) {
            out[length++] = (char)*byte;
        } else {
            out[length++] = (char)(0xc0 | (*byte >> 6));
            out[length++] = (char)(0x80 | (*byte & 0x3f));
        }
    }
    out[length] = '\0';
    return true;
too_long:
    fprintf(err, "unrar: an entry's name is longer than %zu bytes\n", size - 1);
    return false;
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

struct archive* extractor_open_fd(int fd, FILE* err)
{
    struct archive* archive = new_reader();
    return opened(archive, archive_read_open_fd(archive, fd, 64 * 1024), "(file)", err);
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
    static char listed[64 * 1024];
    while (next_entry(archive, name, &entry, &failed, err)) {
        if (entry_name(entry, listed, sizeof listed, err))
            fprintf(out, "%s\n", listed);
        else if (archive_entry_filetype(entry) != AE_IFDIR)
            failed = true;
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
    static char listed[64 * 1024];
    while (!found && next_entry(archive, name, &entry, &failed, err))
        found = entry_name(entry, listed, sizeof listed, err) && strcmp(listed, wanted) == 0;
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

void extractor_fill(struct archive* archive, struct entry_cache* cache)
{
    struct archive_entry* entry = NULL;
    bool failed = false;
    static char listed[64 * 1024];
    static char buffer[64 * 1024];
    FILE* quiet = fopen("/dev/null", "w");
    while (!failed && !entry_cache_stopped(cache)
        && next_entry(archive, "(file)", &entry, &failed, quiet ? quiet : stderr)) {
        if (!entry_name(entry, listed, sizeof listed, quiet ? quiet : stderr))
            continue;
        const int64_t size = archive_entry_size_is_set(entry) ? archive_entry_size(entry) : -1;
        if (entry_cache_begin(cache, listed, size) != entry_keep_write)
            continue;
        la_ssize_t count = 0;
        bool written = true;
        while (written && (count = archive_read_data(archive, buffer, sizeof buffer)) > 0)
            written = entry_cache_write(cache, buffer, (size_t)count);
        /* A damaged entry may leave the reader where no later entry can be
         * trusted. */
        failed = written && count < 0;
        entry_cache_end(cache, written && count == 0);
    }
    if (quiet)
        fclose(quiet);
    archive_read_free(archive);
}
