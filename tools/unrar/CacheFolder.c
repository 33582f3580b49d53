/* SPDX-License-Identifier: MIT */
#define _XOPEN_SOURCE 700

#include "CacheFolder.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

/* Half a GiB holds a dozen comics of 40 MB; TAMBER_UNRAR_CACHE_LIMIT sets
 * another, 0 turns the cache off. */
static const uint64_t default_limit = (uint64_t)512 << 20;

/* The device's user storage: its /tmp is memory. */
static const char device_storage[] = "/mnt/onboard";

static bool is_folder(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

static bool fits(size_t size, int written)
{
    return written > 0 && (size_t)written < size;
}

static bool default_root(char* root, size_t size)
{
#ifdef UNRAR_CACHE_DIR
    /* A build's own choice, from the CMake option TAMBER_UNRAR_CACHE_DIR. */
    if (UNRAR_CACHE_DIR[0])
        return fits(size, snprintf(root, size, "%s", UNRAR_CACHE_DIR));
#endif
    if (is_folder(device_storage))
        return fits(size, snprintf(root, size, "%s/.tamber-cache/unrar", device_storage));
    const char* xdg = getenv("XDG_CACHE_HOME");
    if (xdg && xdg[0] == '/')
        return fits(size, snprintf(root, size, "%s/tamber/unrar", xdg));
    const char* home = getenv("HOME");
    if (home && home[0] == '/')
        return fits(size, snprintf(root, size, "%s/.cache/tamber/unrar", home));
    return false;
}

bool cache_settings_read(struct cache_settings* settings)
{
    settings->limit = default_limit;
    const char* limit = getenv("TAMBER_UNRAR_CACHE_LIMIT");
    if (limit && limit[0]) {
        char* end = NULL;
        errno = 0;
        const unsigned long long value = strtoull(limit, &end, 10);
        if (errno == 0 && *end == '\0' && limit[0] != '-')
            settings->limit = value;
    }
    if (settings->limit == 0)
        return false;
    const char* dir = getenv("TAMBER_UNRAR_CACHE_DIR");
    if (dir && dir[0])
        return dir[0] == '/'
            && fits(
                sizeof settings->root, snprintf(settings->root, sizeof settings->root, "%s", dir));
    return default_root(settings->root, sizeof settings->root);
}

/* --- identity ----------------------------------------------------------------- */

/* Eight bytes a step, multiplied and folded: a few cycles a word, which
 * matters when every page served is checked. */
static uint64_t mix(uint64_t state, uint64_t word)
{
    state = (state ^ word) * 0xff51afd7ed558ccdu;
    return state ^ (state >> 32);
}

void cache_hasher_start(struct cache_hasher* hasher, uint64_t seed)
{
    hasher->state = seed * 0x9e3779b97f4a7c15u + 0x2545f4914f6cdd1du;
    hasher->total = 0;
    hasher->carried = 0;
}

void cache_hasher_add(struct cache_hasher* hasher, const void* data, size_t size)
{
    const unsigned char* at = data;
    hasher->total += size;
    uint64_t word;
    if (hasher->carried) {
        const size_t take = size < 8 - hasher->carried ? size : 8 - hasher->carried;
        memcpy(hasher->carry + hasher->carried, at, take);
        hasher->carried += take;
        at += take;
        size -= take;
        if (hasher->carried < 8)
            return;
        memcpy(&word, hasher->carry, 8);
        hasher->state = mix(hasher->state, word);
        hasher->carried = 0;
    }
    uint64_t state = hasher->state;
    for (; size >= 8; size -= 8, at += 8) {
        memcpy(&word, at, 8);
        state = mix(state, word);
    }
    hasher->state = state;
    memcpy(hasher->carry, at, size);
    hasher->carried = size;
}

uint64_t cache_hasher_end(const struct cache_hasher* hasher)
{
    uint64_t tail = 0;
    for (size_t i = 0; i < hasher->carried; ++i)
        tail |= (uint64_t)hasher->carry[i] << (8 * i);
    uint64_t state = mix(hasher->state, tail) ^ hasher->total;
    state *= 0xc4ceb9fe1a85ec53u;
    return state ^ (state >> 29);
}

uint64_t cache_hash(const void* data, size_t size, uint64_t seed)
{
    struct cache_hasher hasher;
    cache_hasher_start(&hasher, seed);
    cache_hasher_add(&hasher, data, size);
    return cache_hasher_end(&hasher);
}

bool book_identity_of(int fd, struct book_identity* identity)
{
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    memset(identity, 0, sizeof *identity);
    identity->device = status.st_dev;
    identity->inode = status.st_ino;
    identity->size = status.st_size;
    identity->mtime_seconds = (int64_t)status.st_mtim.tv_sec;
    identity->mtime_nanoseconds = status.st_mtim.tv_nsec;
    /* The first and last 4 KB: a 7z or RAR header's place, and what a
     * rewrite that kept the time and the size would still change. */
    unsigned char edge[8192];
    const off_t part = status.st_size < 4096 ? status.st_size : 4096;
    const ssize_t first = pread(fd, edge, (size_t)part, 0);
    const ssize_t last = pread(fd, edge + part, (size_t)part, status.st_size - part);
    if (first != part || last != part)
        return false;
    identity->edges = cache_hash(edge, (size_t)(2 * part), 1);
    return true;
}

bool book_identity_same(const struct book_identity* a, const struct book_identity* b)
{
    return a->device == b->device && a->inode == b->inode && a->size == b->size
        && a->mtime_seconds == b->mtime_seconds && a->mtime_nanoseconds == b->mtime_nanoseconds
        && a->edges == b->edges;
}

/* --- folders ------------------------------------------------------------------ */

/* Makes each missing folder of path, the cache's own ones private. */
static bool make_folders(const char* path)
{
    char partial[cache_path_size];
    const size_t length = strlen(path);
    if (length >= sizeof partial)
        return false;
    memcpy(partial, path, length + 1);
    for (size_t i = 1; i <= length; ++i) {
        if (partial[i] != '/' && partial[i] != '\0')
            continue;
        const char kept = partial[i];
        partial[i] = '\0';
        if (mkdir(partial, 0700) != 0 && errno != EEXIST)
            return false;
        partial[i] = kept;
    }
    return is_folder(path);
}

bool cache_write_at(int fd, const void* data, size_t size, off_t offset)
{
    const char* at = data;
    while (size > 0) {
        const ssize_t count = pwrite(fd, at, size, offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        at += count;
        size -= (size_t)count;
        offset += count;
    }
    return true;
}

static ssize_t read_small(const char* path, char* buffer, size_t size)
{
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    size_t length = 0;
    ssize_t count;
    while (length < size && (count = read(fd, buffer + length, size - length)) > 0)
        length += (size_t)count;
    close(fd);
    return (ssize_t)length;
}

bool cache_book_folder(const struct cache_settings* settings, const char* canonical_path,
    const struct book_identity* identity, char* folder, size_t size)
{
    char key[cache_path_size + 256];
    const int length = snprintf(key, sizeof key,
        "tamber unrar cache 1\n%s\n%ju %ju %jd %" PRId64 ".%09ld %016" PRIx64 "\n", canonical_path,
        (uintmax_t)identity->device, (uintmax_t)identity->inode, (intmax_t)identity->size,
        identity->mtime_seconds, identity->mtime_nanoseconds, identity->edges);
    if (!fits(sizeof key, length))
        return false;
    /* Two hashes make a name that no two books share in practice; the key
     * inside settles it. */
    if (!fits(size,
            snprintf(folder, size, "%s/%016" PRIx64 "%016" PRIx64, settings->root,
                cache_hash(key, (size_t)length, 2), cache_hash(key, (size_t)length, 3))))
        return false;

    char path[2 * cache_path_size];
    snprintf(path, sizeof path, "%s/key", folder);
    char stored[sizeof key];
    ssize_t read = read_small(path, stored, sizeof stored);
    if (read < 0) {
        if (!make_folders(folder))
            return false;
        /* Written aside and renamed, so that a run that reads it finds it
         * whole; two runs that write it write the same. */
        char temporary[2 * cache_path_size];
        snprintf(temporary, sizeof temporary, "%s/k-%ld", folder, (long)getpid());
        const int fd = open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (fd < 0)
            return false;
        const bool written = cache_write_at(fd, key, (size_t)length, 0);
        if (close(fd) != 0 || !written || rename(temporary, path) != 0) {
            unlink(temporary);
            return false;
        }
        read = read_small(path, stored, sizeof stored);
    }
    return read == length && memcmp(stored, key, (size_t)length) == 0;
}

void cache_touch(const char* folder)
{
    /* The clock's own time rather than the file system's, which may be a
     * tick behind, so that a book read after another is never older. */
    struct timespec now[2];
    if (clock_gettime(CLOCK_REALTIME, &now[0]) != 0)
        return;
    now[1] = now[0];
    utimensat(AT_FDCWD, folder, now, 0);
}

/* --- size and eviction ------------------------------------------------------- */

static bool is_book_name(const char* name)
{
    size_t length = 0;
    for (; name[length]; ++length) {
        if (!((name[length] >= '0' && name[length] <= '9')
                || (name[length] >= 'a' && name[length] <= 'f')))
            return false;
    }
    return length == 32;
}

static uint64_t folder_bytes(const char* folder)
{
    DIR* dir = opendir(folder);
    if (!dir)
        return 0;
    uint64_t bytes = 0;
    struct dirent* entry;
    struct stat status;
    while ((entry = readdir(dir))) {
        if (entry->d_name[0] != '.'
            && fstatat(dirfd(dir), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0
            && S_ISREG(status.st_mode))
            bytes += (uint64_t)status.st_size;
    }
    closedir(dir);
    return bytes;
}

struct book_folder
{
    char name[33];
    time_t read;
    long read_nanoseconds;
    uint64_t bytes;
};

static int least_recent_first(const void* left, const void* right)
{
    const struct book_folder* a = left;
    const struct book_folder* b = right;
    if (a->read != b->read)
        return a->read < b->read ? -1 : 1;
    if (a->read_nanoseconds != b->read_nanoseconds)
        return a->read_nanoseconds < b->read_nanoseconds ? -1 : 1;
    return strcmp(a->name, b->name);
}

/* The cache's book folders; *count of them, malloc'ed. */
static struct book_folder* book_folders(const struct cache_settings* settings, size_t* count)
{
    *count = 0;
    DIR* dir = opendir(settings->root);
    if (!dir)
        return NULL;
    struct book_folder* books = NULL;
    size_t capacity = 0;
    char path[2 * cache_path_size];
    struct dirent* entry;
    struct stat status;
    while ((entry = readdir(dir))) {
        if (!is_book_name(entry->d_name))
            continue;
        snprintf(path, sizeof path, "%s/%s", settings->root, entry->d_name);
        if (lstat(path, &status) != 0 || !S_ISDIR(status.st_mode))
            continue;
        if (*count == capacity) {
            capacity = capacity ? 2 * capacity : 16;
            struct book_folder* more = realloc(books, capacity * sizeof *books);
            if (!more)
                break;
            books = more;
        }
        struct book_folder* book = &books[(*count)++];
        memcpy(book->name, entry->d_name, 33);
        book->read = status.st_mtim.tv_sec;
        book->read_nanoseconds = status.st_mtim.tv_nsec;
        book->bytes = folder_bytes(path);
    }
    closedir(dir);
    return books;
}

uint64_t cache_usage(const struct cache_settings* settings)
{
    size_t count = 0;
    struct book_folder* books = book_folders(settings, &count);
    uint64_t bytes = 0;
    for (size_t i = 0; i < count; ++i)
        bytes += books[i].bytes;
    free(books);
    return bytes;
}

/* Removes a book's folder unless a run holds its lock. */
static bool evict(const char* folder)
{
    DIR* dir = opendir(folder);
    if (!dir)
        return false;
    const int lock = openat(dirfd(dir), "lock", O_RDWR | O_CLOEXEC);
    if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) != 0) {
        close(lock);
        closedir(dir);
        return false;
    }
    struct dirent* entry;
    while ((entry = readdir(dir))) {
        if (entry->d_name[0] != '.' && strcmp(entry->d_name, "lock") != 0)
            unlinkat(dirfd(dir), entry->d_name, 0);
    }
    /* The lock goes last, so that no run takes a fresh one meanwhile. */
    unlinkat(dirfd(dir), "lock", 0);
    closedir(dir);
    rmdir(folder);
    if (lock >= 0)
        close(lock);
    return true;
}

uint64_t cache_make_room(
    const struct cache_settings* settings, const char* own, uint64_t incoming, bool* fits_now)
{
    size_t count = 0;
    struct book_folder* books = book_folders(settings, &count);
    uint64_t usage = 0;
    for (size_t i = 0; i < count; ++i)
        usage += books[i].bytes;
    qsort(books, count, sizeof *books, least_recent_first);
    const char* own_name = strrchr(own, '/');
    own_name = own_name ? own_name + 1 : own;
    char path[2 * cache_path_size];
    for (size_t i = 0; i < count && usage + incoming > settings->limit; ++i) {
        if (strcmp(books[i].name, own_name) == 0)
            continue;
        snprintf(path, sizeof path, "%s/%s", settings->root, books[i].name);
        if (evict(path))
            usage -= books[i].bytes;
    }
    free(books);
    *fits_now = usage + incoming <= settings->limit;
    return usage;
}
