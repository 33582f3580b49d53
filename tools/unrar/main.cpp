// The RAR extractor that the comic plug-in runs from the application's folder.
//
//   unrar vb ARCHIVE               every entry name, one per line, on standard output
//   unrar p -ierr -- ARCHIVE NAME  the bytes of the entry named exactly NAME on
//                                  standard output; messages on standard error
//
// RAR 4 and RAR 5, as libarchive reads them. Exit status 0 on success, 1 when
// the archive or the entry cannot be read, 2 on bad arguments.

#include "Extractor.h"

#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

const char usage[] = "usage: unrar vb ARCHIVE\n"
                     "       unrar p -ierr -- ARCHIVE NAME\n";

} // namespace

int main(int argc, char** argv)
{
    // Names convert to the user's encoding, the one the plug-in decodes with.
    std::setlocale(LC_ALL, "");

    if (argc == 3 && std::strcmp(argv[1], "vb") == 0) {
        struct archive* archive = Extractor::openFile(argv[2], stderr);
        return archive ? Extractor::list(archive, argv[2], stdout, stderr) : 1;
    }
    if (argc == 6 && std::strcmp(argv[1], "p") == 0 && std::strcmp(argv[2], "-ierr") == 0
        && std::strcmp(argv[3], "--") == 0) {
        struct archive* archive = Extractor::openFile(argv[4], stderr);
        return archive ? Extractor::print(archive, argv[4], argv[5], stdout, stderr) : 1;
    }
    std::fputs(usage, stderr);
    return 2;
}
