/* SPDX-License-Identifier: MIT */
#ifndef CACHEFOLDER_H
#define CACHEFOLDER_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

/* The cache's folders: where it lives, one folder per book named after the
 * book's identity, and the size limit that evicts the least recently read
 * books. What goes into a book's folder is EntryCache's. */

enum { cache_path_size = 4096 + 64 };

struct cache_settings
{
    char root[cache_path_size];
    uint64_t limit;
};

/* From TAMBER_UNRAR_CACHE_DIR and TAMBER_UNRAR_CACHE_LIMIT, or the defaults;
 * false when the cache is off (a limit of 0, or no folder to put it in). */
bool cache_settings_read(struct cache_settings* settings);

/* What tells a book from any other, however it was replaced: the file's
 * canonical path, device, inode, size, modification time in nanoseconds and
 * a hash of its first and last bytes. */
struct book_identity
{
    dev_t device;
    ino_t inode;
    off_t size;
    int64_t mtime_seconds;
    long mtime_nanoseconds;
    uint64_t edges;
};

bool book_identity_of(int fd, struct book_identity* identity);
bool book_identity_same(const struct book_identity* a, const struct book_identity* b);

/* The book's folder, root/<hash of its identity>, made with its key (the
 * identity in full, checked on every use so that a hash collision serves
 * nothing); false when it cannot be made or belongs to another book. */
bool cache_book_folder(const struct cache_settings* settings, const char* canonical_path,
    const struct book_identity* identity, char* folder, size_t size);

/* Writes all of data at offset, through interruptions and short writes. */
bool cache_write_at(int fd, const void* data, size_t size, off_t offset);

/* Marks the book as read now, for the order of eviction. */
void cache_touch(const char* folder);

/* Bytes in the cache's book folders. */
uint64_t cache_usage(const struct cache_settings* settings);

/* Evicts whole books other than own, least recently read first, until
 * incoming more bytes fit under the limit; a book that another run is
 * filling is left alone. Returns the usage after it; *fits says whether
 * incoming fits now. */
uint64_t cache_make_room(
    const struct cache_settings* settings, const char* own, uint64_t incoming, bool* fits);

/* A 64-bit hash, for names of files and for checking what was kept, over
 * bytes that may come in pieces of any size. */
struct cache_hasher
{
    uint64_t state;
    uint64_t total;
    unsigned char carry[8];
    size_t carried;
};

void cache_hasher_start(struct cache_hasher* hasher, uint64_t seed);
void cache_hasher_add(struct cache_hasher* hasher, const void* data, size_t size);
uint64_t cache_hasher_end(const struct cache_hasher* hasher);
uint64_t cache_hash(const void* data, size_t size, uint64_t seed);

#endif
