/* SPDX-License-Identifier: MIT */
/* The extractor that the comic plug-in runs from the application's folder.
 *
 *   unrar vb ARCHIVE               every file's name, one per line, on standard output
 *   unrar p -ierr -- ARCHIVE NAME  the bytes of the file named exactly NAME on
 *                                  standard output; messages on standard error
 *
 * RAR 4, RAR 5, ZIP and 7z, as libarchive reads them. Exit status 0 on success,
 * 1 when the archive or the entry cannot be read, 2 on bad arguments.
 *
 * The entries of solid archives are kept in a cache between runs
 * (EntryCache.h): TAMBER_UNRAR_CACHE_DIR names its folder and
 * TAMBER_UNRAR_CACHE_LIMIT its size in bytes, 0 for no cache.
 *
 * Plain C, so that the device's copy can be one fully static program. */

#include "EntryCache.h"
#include "Extractor.h"

#include <locale.h>
#include <stdio.h>
#include <string.h>

static const char usage[] = "usage: unrar vb ARCHIVE\n"
                            "       unrar p -ierr -- ARCHIVE NAME\n";

int main(int argc, char** argv)
{
    /* Names are listed as UTF-8 whatever the user's locale: libarchive
     * converts Unicode names to the character type, which in the C locale
     * could hold none of them. musl knows any UTF-8 name; glibc has C.UTF-8
     * from 2.35 and often en_US.UTF-8 before. */
    if (!setlocale(LC_CTYPE, "C.UTF-8") && !setlocale(LC_CTYPE, "en_US.UTF-8"))
        setlocale(LC_CTYPE, "");

    if (argc == 3 && strcmp(argv[1], "vb") == 0) {
        struct archive* archive = extractor_open_file(argv[2], stderr);
        return archive ? extractor_list(archive, argv[2], stdout, stderr) : 1;
    }
    if (argc == 6 && strcmp(argv[1], "p") == 0 && strcmp(argv[2], "-ierr") == 0
        && strcmp(argv[3], "--") == 0) {
        int status;
        if (entry_cache_print(argv[4], argv[5], stdout, &status))
            return status;
        struct archive* archive = extractor_open_file(argv[4], stderr);
        return archive ? extractor_print(archive, argv[4], argv[5], stdout, stderr) : 1;
    }
    fputs(usage, stderr);
    return 2;
}
