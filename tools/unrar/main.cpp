// The RAR extractor that the comic plug-in runs from the application's folder.
//
//   unrar vb ARCHIVE               every entry name, one per line, on standard output
//   unrar p -ierr -- ARCHIVE NAME  the bytes of the entry named exactly NAME on
//                                  standard output; messages on standard error
//
// RAR 4 and RAR 5, as libarchive reads them. Exit status 0 on success, 1 when
// the archive or the entry cannot be read, 2 on bad arguments.

#include <archive.h>
#include <archive_entry.h>

#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

const char usage[] = "usage: unrar vb ARCHIVE\n"
                     "       unrar p -ierr -- ARCHIVE NAME\n";

struct archive* openArchive(const char* path)
{
    struct archive* archive = archive_read_new();
    archive_read_support_format_rar(archive);
    archive_read_support_format_rar5(archive);
    if (archive_read_open_filename(archive, path, 64 * 1024) != ARCHIVE_OK) {
        std::fprintf(stderr, "unrar: %s: %s\n", path, archive_error_string(archive));
        archive_read_free(archive);
        return nullptr;
    }
    return archive;
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
bool nextEntry(
    struct archive* archive, const char* path, struct archive_entry** entry, bool* failed)
{
    const int status = archive_read_next_header(archive, entry);
    if (status == ARCHIVE_OK || status == ARCHIVE_WARN)
        return true;
    *failed = status != ARCHIVE_EOF;
    if (*failed)
        std::fprintf(stderr, "unrar: %s: %s\n", path, archive_error_string(archive));
    return false;
}

int list(const char* path)
{
    struct archive* archive = openArchive(path);
    if (!archive)
        return 1;
    struct archive_entry* entry = nullptr;
    bool failed = false;
    while (nextEntry(archive, path, &entry, &failed)) {
        if (const char* name = entryName(entry))
            std::printf("%s\n", name);
    }
    archive_read_free(archive);
    return failed || std::fflush(stdout) != 0 ? 1 : 0;
}

int print(const char* path, const char* wanted)
{
    struct archive* archive = openArchive(path);
    if (!archive)
        return 1;
    struct archive_entry* entry = nullptr;
    bool failed = false;
    bool found = false;
    while (!found && nextEntry(archive, path, &entry, &failed)) {
        const char* name = entryName(entry);
        found = name && std::strcmp(name, wanted) == 0;
    }
    if (found) {
        static char buffer[64 * 1024];
        la_ssize_t count;
        while ((count = archive_read_data(archive, buffer, sizeof buffer)) > 0) {
            if (std::fwrite(buffer, 1, size_t(count), stdout) != size_t(count))
                break;
        }
        if (count < 0) {
            std::fprintf(
                stderr, "unrar: %s: %s: %s\n", path, wanted, archive_error_string(archive));
            failed = true;
        }
    } else if (!failed) {
        std::fprintf(stderr, "unrar: %s: no entry named %s\n", path, wanted);
        failed = true;
    }
    archive_read_free(archive);
    return failed || std::fflush(stdout) != 0 || std::ferror(stdout) ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    // Names convert to the user's encoding, the one the plug-in decodes with.
    std::setlocale(LC_ALL, "");

    if (argc == 3 && std::strcmp(argv[1], "vb") == 0)
        return list(argv[2]);
    if (argc == 6 && std::strcmp(argv[1], "p") == 0 && std::strcmp(argv[2], "-ierr") == 0
        && std::strcmp(argv[3], "--") == 0)
        return print(argv[4], argv[5]);
    std::fputs(usage, stderr);
    return 2;
}
