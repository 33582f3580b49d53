/* SPDX-License-Identifier: MIT */
#ifndef CACHEBOOK_H
#define CACHEBOOK_H

/* What the run that prints an entry (EntryCache.c) and the filler that keeps
 * a book's entries (CacheFiller.c) share: one book's place in the cache and
 * the layout of its entries' files. */

#include "CacheFolder.h"
#include "EntryCache.h"

#include <inttypes.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

/* An entry's file: this header, the entry's name, its bytes. The name is
 * checked on every read, since files are named after its hash. */
struct entry_header
{
    char magic[4];
    uint32_t name_size;
    uint64_t data_size;
    uint64_t checksum;
    uint64_t reserved;
};
static const char entry_magic[4] = { 'T', 'U', 'C', '1' };

/* The plug-in takes no entry larger than its memory limit (256 MiB). */
static const uint64_t entry_limit = (uint64_t)256 << 20;

struct kept
{
    uint64_t hash;
    uint64_t bytes;
};

struct entry_cache
{
    struct cache_settings settings;
    struct book_identity identity;
    int fd; /* the archive: the filler reads the very file identified */
    char folder[cache_path_size];
    int lock;
    int notify; /* the filler's pipe to the run that started it */
    uint64_t awaited; /* the hash of the name that run waits for, until passed */
    uint64_t usage;
    bool measured; /* usage is known: measured once the awaited entry is passed */
    uint64_t unmeasured; /* bytes kept before that */
    struct kept* behind; /* entries kept before the awaited one, in order */
    size_t behind_count;
    size_t behind_capacity;
    size_t behind_next; /* the first of them not yet removed for room */
    bool stopped;

    /* The entry being written. */
    int out;
    char temporary[2 * cache_path_size];
    uint64_t name_hash;
    uint32_t name_size;
    struct cache_hasher checksum;
    uint64_t written;
    int64_t declared;

    /* Hashes of the names met in this pass: only a name's first entry is
     * the one printed, as without a cache. */
    uint64_t* seen;
    size_t seen_count;
    size_t seen_capacity;
};

static inline uint64_t name_hash(const char* name)
{
    return cache_hash(name, strlen(name), 4);
}

static inline void entry_path(
    const struct entry_cache* cache, uint64_t hash, char* path, size_t size)
{
    snprintf(path, size, "%s/e-%016" PRIx64, cache->folder, hash);
}

/* Fills the book's cache from the start of the archive, as a detached child
 * that holds the book's lock; tells the run that started it on notify_fd. */
_Noreturn void cache_filler_run(struct entry_cache* cache, int notify_fd);

#endif
