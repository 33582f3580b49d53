#ifndef EXTRACTOR_H
#define EXTRACTOR_H

#include <cstddef>
#include <cstdio>

struct archive;

// The work of the RAR extractor, apart from its command line, so that a fuzzer
// can run it in-process. Each function takes an archive opened by one of the
// open functions and frees it; name is what messages call the archive.
namespace Extractor {

// A RAR 4 or RAR 5 reader over a file or over bytes in memory; null, with a
// message on err, when libarchive refuses.
struct archive* openFile(const char* path, std::FILE* err);
struct archive* openMemory(const void* data, std::size_t size, std::FILE* err);

// Every entry name, one per line, on out. Returns the exit status: 0, or 1 when
// the archive could not be read to its end.
int list(struct archive* archive, const char* name, std::FILE* out, std::FILE* err);

// The bytes of the entry named exactly wanted on out; stops early when out
// refuses a write. Returns the exit status: 0, or 1 when the entry is missing
// or cannot be read or written.
int print(
    struct archive* archive, const char* name, const char* wanted, std::FILE* out, std::FILE* err);

} // namespace Extractor

#endif
