/* SPDX-License-Identifier: MIT */
#ifndef ENTRYCACHE_H
#define ENTRYCACHE_H

#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The decompressed entries of solid archives, kept on disk between runs.
 *
 * In a solid archive an entry is reached only by decompressing every entry
 * before it, so each run of the extractor would pay for the pages before the
 * one it prints. A run that finds the entry kept prints it from the cache.
 * Otherwise one run per book becomes the book's filler: a detached child
 * that holds the book's lock and decompresses the whole archive from the
 * start, keeping each entry; the run that started it, and any other run that
 * asks for an entry meanwhile, prints the entry as soon as it is kept. The
 * filler goes on after its run has exited, since readers read forward.
 *
 * Entries are written aside and renamed into place with their length and a
 * checksum, so a filler that was killed or found the disk full leaves nothing
 * that is served. Nothing is kept for archives that are not solid. */

struct entry_cache;

/* Prints the entry named exactly wanted of the archive at path on out, as
 * extractor_print would, when the cache can: true with the exit status in
 * *status. False when the archive is not solid or the cache is off or
 * unusable, and when the entry could not be kept (damaged, missing, too
 * large): then the caller extracts it as without a cache, and its messages
 * are the usual ones. */
bool entry_cache_print(const char* path, const char* wanted, FILE* out, int* status);

/* What the filler does with an entry it reaches. */
enum entry_keep {
    entry_keep_write, /* write it with entry_cache_write and entry_cache_end */
    entry_keep_have, /* kept already */
    entry_keep_skip, /* not kept: a name seen before, too large, no room */
};

/* Called by the filler for each named entry, in the archive's order, with
 * its size (-1 when unknown). */
enum entry_keep entry_cache_begin(struct entry_cache* cache, const char* name, int64_t size);
bool entry_cache_write(struct entry_cache* cache, const void* data, size_t size);
/* Keeps the entry when complete, otherwise discards what was written. */
void entry_cache_end(struct entry_cache* cache, bool complete);
/* True once nothing more will be kept: the cache is full, or the book changed. */
bool entry_cache_stopped(const struct entry_cache* cache);

#ifdef __cplusplus
}
#endif

#endif
