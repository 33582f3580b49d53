/* SPDX-License-Identifier: MIT */
/* The filler: a detached child that decompresses a solid archive from its
 * start and keeps each entry, within the cache's limit. */
#define _XOPEN_SOURCE 700

#include "CacheBook.h"
#include "Extractor.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

static bool seen_in_pass(const struct entry_cache* cache, uint64_t hash)
{
    if (hash == 0)
        hash = 1;
    if (cache->seen_capacity == 0)
        return false;
    size_t slot = (size_t)(hash & (cache->seen_capacity - 1));
    for (; cache->seen[slot]; slot = (slot + 1) & (cache->seen_capacity - 1)) {
        if (cache->seen[slot] == hash)
            return true;
    }
    return false;
}

static bool seen_before(struct entry_cache* cache, uint64_t hash)
{
    /* Open addressing over a table kept at most half full; 0 marks a free
     * slot, so a hash of 0 is taken as 1. */
    if (hash == 0)
        hash = 1;
    if (2 * (cache->seen_count + 1) > cache->seen_capacity) {
        const size_t capacity = cache->seen_capacity ? 2 * cache->seen_capacity : 1024;
        uint64_t* table = calloc(capacity, sizeof *table);
        if (!table)
            return true;
        for (size_t i = 0; i < cache->seen_capacity; ++i) {
            if (!cache->seen[i])
                continue;
            size_t slot = (size_t)(cache->seen[i] & (capacity - 1));
            while (table[slot])
                slot = (slot + 1) & (capacity - 1);
            table[slot] = cache->seen[i];
        }
        free(cache->seen);
        cache->seen = table;
        cache->seen_capacity = capacity;
    }
    size_t slot = (size_t)(hash & (cache->seen_capacity - 1));
    for (; cache->seen[slot]; slot = (slot + 1) & (cache->seen_capacity - 1)) {
        if (cache->seen[slot] == hash)
            return true;
    }
    cache->seen[slot] = hash;
    ++cache->seen_count;
    return false;
}

/* Tells the run that started the filler that an entry was passed, kept or
 * not; a run that has gone is no longer told. */
static void notify(struct entry_cache* cache, uint64_t hash)
{
    if (hash == cache->awaited) {
        cache->awaited = 0;
        /* Its run has its entry: the rest goes below the reader's own work,
         * so that a page kept already is shown first, while a run that
         * waits for an entry leaves the filler the processor. */
        if (nice(10) == -1) {
            /* Not allowed: the filler keeps the reader's priority. */
        }
    }
    if (cache->notify >= 0 && write(cache->notify, &hash, sizeof hash) != (ssize_t)sizeof hash
        && errno != EAGAIN) {
        close(cache->notify);
        cache->notify = -1;
    }
}

/* Removes this book's entries that this pass has not reached: kept for a
 * reader who was elsewhere in the book, they matter less than the ones that
 * follow where the reader is now. True once expected more bytes fit. */
static bool drop_ahead(struct entry_cache* cache, uint64_t expected)
{
    DIR* dir = opendir(cache->folder);
    if (!dir)
        return false;
    bool fits = false;
    struct dirent* entry;
    struct stat status;
    while (!fits && (entry = readdir(dir))) {
        char* end = NULL;
        if (entry->d_name[0] != 'e' || entry->d_name[1] != '-')
            continue;
        const uint64_t hash = strtoull(entry->d_name + 2, &end, 16);
        if (*end || seen_in_pass(cache, hash)
            || fstatat(dirfd(dir), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0
            || unlinkat(dirfd(dir), entry->d_name, 0) != 0)
            continue;
        cache->usage
            -= (uint64_t)status.st_size < cache->usage ? (uint64_t)status.st_size : cache->usage;
        fits = cache->usage + expected <= cache->settings.limit;
    }
    closedir(dir);
    return fits;
}

/* Makes room for expected more bytes: other books go first, least recently
 * read first; then this book's entries before the one its run waited for,
 * first ones first, since the reader is past them; then those kept for a
 * reader who was further on. Where the book is larger than the limit, what
 * is kept thus slides along with the reader. */
static void make_room(struct entry_cache* cache, uint64_t expected)
{
    bool fits = false;
    cache->usage = cache_make_room(&cache->settings, cache->folder, expected, &fits);
    cache->measured = true;
    char path[2 * cache_path_size];
    for (; !fits && cache->behind_next < cache->behind_count; ++cache->behind_next) {
        const struct kept* behind = &cache->behind[cache->behind_next];
        entry_path(cache, behind->hash, path, sizeof path);
        if (unlink(path) == 0)
            cache->usage -= behind->bytes;
        fits = cache->usage + expected <= cache->settings.limit;
    }
    if (!fits)
        fits = drop_ahead(cache, expected);
    cache->stopped = !fits;
}

/* Notes a kept entry that comes before the one the filler's run waits for. */
static void remember_behind(struct entry_cache* cache, uint64_t hash, uint64_t bytes)
{
    if (cache->awaited == 0)
        return;
    if (cache->behind_count == cache->behind_capacity) {
        const size_t capacity = cache->behind_capacity ? 2 * cache->behind_capacity : 256;
        struct kept* more = realloc(cache->behind, capacity * sizeof *more);
        if (!more)
            return;
        cache->behind = more;
        cache->behind_capacity = capacity;
    }
    cache->behind[cache->behind_count].hash = hash;
    cache->behind[cache->behind_count].bytes = bytes;
    ++cache->behind_count;
}

enum entry_keep entry_cache_begin(struct entry_cache* cache, const char* name, int64_t size)
{
    const uint64_t hash = name_hash(name);
    if (seen_before(cache, hash))
        return entry_keep_skip;
    char path[2 * cache_path_size];
    entry_path(cache, hash, path, sizeof path);
    struct stat status;
    if (stat(path, &status) == 0 && (uint64_t)status.st_size >= sizeof(struct entry_header)) {
        if (hash != cache->awaited)
            remember_behind(cache, hash, (uint64_t)status.st_size);
        notify(cache, hash);
        return entry_keep_have;
    }
    const uint64_t expected = size < 0 ? 0 : (uint64_t)size;
    /* The whole cache is looked through, and other books evicted, only once
     * the run waiting for an entry has it: the entries up to it are
     * decompressed anyway, and keeping them costs that run nothing. */
    if (!cache->measured
            ? cache->awaited == 0 || cache->unmeasured + expected > cache->settings.limit / 2
            : !cache->stopped && cache->usage + expected > cache->settings.limit)
        make_room(cache, expected);
    if (cache->stopped || expected > entry_limit || expected > cache->settings.limit) {
        notify(cache, hash);
        return entry_keep_skip;
    }
    snprintf(cache->temporary, sizeof cache->temporary, "%s/t-%ld-%016" PRIx64, cache->folder,
        (long)getpid(), hash);
    cache->out = open(cache->temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const size_t name_size = strlen(name);
    struct entry_header header = { { 0 }, (uint32_t)name_size, 0, 0, 0 };
    if (cache->out < 0 || !cache_write_at(cache->out, &header, sizeof header, 0)
        || !cache_write_at(cache->out, name, name_size, sizeof header)) {
        if (cache->out >= 0) {
            close(cache->out);
            unlink(cache->temporary);
        }
        cache->out = -1;
        /* A folder that takes no files keeps nothing. */
        cache->stopped = true;
        notify(cache, hash);
        return entry_keep_skip;
    }
    cache->name_hash = hash;
    cache->name_size = (uint32_t)name_size;
    cache->written = 0;
    cache->declared = size;
    cache_hasher_start(&cache->checksum, 5);
    return entry_keep_write;
}

bool entry_cache_write(struct entry_cache* cache, const void* data, size_t size)
{
    if (cache->out < 0)
        return false;
    const uint64_t at = sizeof(struct entry_header) + cache->name_size + cache->written;
    if (cache->written + size > entry_limit
        || (cache->measured && cache->usage + at + size > cache->settings.limit)
        || at + size > cache->settings.limit || !cache_write_at(cache->out, data, size, (off_t)at))
        return false;
    cache_hasher_add(&cache->checksum, data, size);
    cache->written += size;
    return true;
}

/* Removes every kept entry of the book and its key: what was read no longer
 * matches the identity it would be kept under. Only the lock's holder calls
 * it. */
static void forget_book(struct entry_cache* cache)
{
    cache->stopped = true;
    DIR* dir = opendir(cache->folder);
    if (!dir)
        return;
    struct dirent* entry;
    while ((entry = readdir(dir))) {
        if (entry->d_name[0] == 'e' || strcmp(entry->d_name, "key") == 0)
            unlinkat(dirfd(dir), entry->d_name, 0);
    }
    closedir(dir);
}

void entry_cache_end(struct entry_cache* cache, bool complete)
{
    if (cache->out < 0)
        return;
    struct book_identity now;
    if (complete
        && (!book_identity_of(cache->fd, &now) || !book_identity_same(&now, &cache->identity))) {
        forget_book(cache);
        complete = false;
    }
    if (complete && cache->declared >= 0 && (uint64_t)cache->declared != cache->written)
        complete = false;
    struct entry_header header
        = { { 0 }, cache->name_size, cache->written, cache_hasher_end(&cache->checksum), 0 };
    memcpy(header.magic, entry_magic, sizeof entry_magic);
    char path[2 * cache_path_size];
    entry_path(cache, cache->name_hash, path, sizeof path);
    complete = complete && cache_write_at(cache->out, &header, sizeof header, 0);
    complete = close(cache->out) == 0 && complete;
    cache->out = -1;
    if (complete && rename(cache->temporary, path) == 0) {
        const uint64_t bytes = sizeof header + cache->name_size + cache->written;
        cache->usage += bytes;
        if (!cache->measured)
            cache->unmeasured += bytes;
        if (cache->name_hash != cache->awaited)
            remember_behind(cache, cache->name_hash, bytes);
    } else {
        unlink(cache->temporary);
        complete = false;
    }
    notify(cache, cache->name_hash);
}

bool entry_cache_stopped(const struct entry_cache* cache)
{
    return cache->stopped;
}

/* Files a killed filler left half written. Only the lock's holder calls it. */
static void remove_temporaries(const struct entry_cache* cache)
{
    DIR* dir = opendir(cache->folder);
    if (!dir)
        return;
    struct dirent* entry;
    while ((entry = readdir(dir))) {
        if (entry->d_name[0] == 't' && entry->d_name[1] == '-')
            unlinkat(dirfd(dir), entry->d_name, 0);
    }
    closedir(dir);
}

/* Closes every descriptor but the standard ones and the filler's own. The
 * open ones are listed where the system lists them: closing every possible
 * number costs milliseconds where the limit is high. */
static void close_others(const struct entry_cache* cache, int notify_fd)
{
    int open_fds[256];
    size_t count = 0;
    DIR* dir = opendir("/proc/self/fd");
    if (dir) {
        struct dirent* entry;
        while ((entry = readdir(dir)) && count < sizeof open_fds / sizeof *open_fds) {
            if (entry->d_name[0] >= '0' && entry->d_name[0] <= '9')
                open_fds[count++] = atoi(entry->d_name);
        }
        const int listing = dirfd(dir);
        for (size_t i = 0; i < count; ++i) {
            const int fd = open_fds[i];
            if (fd > STDERR_FILENO && fd != listing && fd != cache->fd && fd != cache->lock
                && fd != notify_fd)
                close(fd);
        }
        closedir(dir);
        if (count < sizeof open_fds / sizeof *open_fds)
            return;
    }
    long open_max = sysconf(_SC_OPEN_MAX);
    if (open_max < 0 || open_max > 4096)
        open_max = 4096;
    for (int fd = STDERR_FILENO + 1; fd < open_max; ++fd) {
        if (fd != cache->fd && fd != cache->lock && fd != notify_fd)
            close(fd);
    }
}

void cache_filler_run(struct entry_cache* cache, int notify_fd)
{
    setsid();
    signal(SIGPIPE, SIG_IGN);
    /* Nothing of the caller's is held: whoever reads the run's output or
     * waits for its pipes to close is not kept waiting. */
    const int null = open("/dev/null", O_RDWR);
    if (null >= 0) {
        dup2(null, STDIN_FILENO);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
    }
    close_others(cache, notify_fd);
    fcntl(notify_fd, F_SETFL, fcntl(notify_fd, F_GETFL) | O_NONBLOCK);
    cache->notify = notify_fd;

    remove_temporaries(cache);
    struct archive* archive = extractor_open_fd(cache->fd, stderr);
    if (archive)
        extractor_fill(archive, cache);
    /* A pass that ended before its run's entry still keeps the limit. */
    if (!cache->measured)
        make_room(cache, 0);
    _exit(0);
}
