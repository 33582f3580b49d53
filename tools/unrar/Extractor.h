// SPDX-License-Identifier: MIT
#ifndef EXTRACTOR_H
#define EXTRACTOR_H

#include <stddef.h>
#include <stdio.h>

struct archive;
struct entry_cache;

#ifdef __cplusplus
extern "C" {
#endif

/* The work of the extractor, apart from its command line, so that a fuzzer can
 * run it in-process. Each function takes an archive opened by one of the open
 * functions and frees it; name is what messages call the archive. */

/* A reader of RAR 4, RAR 5, ZIP and 7z over a file or over bytes in memory;
 * null, with a message on err, when libarchive refuses. */
struct archive* extractor_open_file(const char* path, FILE* err);
struct archive* extractor_open_memory(const void* data, size_t size, FILE* err);
/* Over an open file, which stays open. */
struct archive* extractor_open_fd(int fd, FILE* err);

/* Every file's name, one per line, on out; folders are left out. Returns the
 * exit status: 0, or 1 when the archive could not be read to its end. */
int extractor_list(struct archive* archive, const char* name, FILE* out, FILE* err);

/* The bytes of the file named exactly wanted on out; stops early when out
 * refuses a write. Returns the exit status: 0, or 1 when the entry is missing
 * or cannot be read or written. */
int extractor_print(
    struct archive* archive, const char* name, const char* wanted, FILE* out, FILE* err);

/* Reads every entry from the start and hands each to the cache to keep,
 * until the end, an error or a cache that keeps no more. */
void extractor_fill(struct archive* archive, struct entry_cache* cache);

#ifdef __cplusplus
}
#endif

#endif
