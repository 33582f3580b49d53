/* SPDX-License-Identifier: MIT */
#define _XOPEN_SOURCE 700

#include "CacheBook.h"
#include "Solid.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

/* A run that waits for another run's filler gives up before the plug-in's
 * 30 seconds, and then extracts the entry itself. */
static const int wait_limit_ms = 25000;
static const long poll_interval_ns = 5 * 1000 * 1000;

/* --- serving ----------------------------------------------------------------- */

enum served { served_no, served_yes, served_failed };

/* Prints the kept entry on out when it is there, whole and named wanted. */
static enum served serve(const struct entry_cache* cache, const char* wanted, FILE* out)
{
    char path[2 * cache_path_size];
    entry_path(cache, name_hash(wanted), path, sizeof path);
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return served_no;
    struct stat status;
    const size_t name_size = strlen(wanted);
    if (fstat(fd, &status) != 0
        || (uint64_t)status.st_size < sizeof(struct entry_header) + name_size) {
        close(fd);
        return served_no;
    }
    const size_t size = (size_t)status.st_size;
    void* map = mmap(NULL, size, PROT_READ, MAP_PRIVATE, fd, 0);
    close(fd);
    if (map == MAP_FAILED)
        return served_no;
    struct entry_header header;
    memcpy(&header, map, sizeof header);
    const unsigned char* name = (const unsigned char*)map + sizeof header;
    const unsigned char* data = name + name_size;
    bool whole = memcmp(header.magic, entry_magic, sizeof entry_magic) == 0
        && header.name_size == name_size && memcmp(name, wanted, name_size) == 0
        && header.data_size == size - sizeof header - name_size;
    if (whole && cache_hash(data, (size_t)header.data_size, 5) != header.checksum) {
        /* Damaged where it lies (a power cut): it goes, and is made again. */
        unlink(path);
        whole = false;
    }
    enum served result = served_no;
    if (whole) {
        const bool written = fwrite(data, 1, (size_t)header.data_size, out) == header.data_size;
        result = written && fflush(out) == 0 ? served_yes : served_failed;
        cache_touch(cache->folder);
    }
    munmap(map, size);
    return result;
}

/* --- the run's side --------------------------------------------------------------- */

enum claim { claim_taken, claim_busy, claim_impossible };

static enum claim claim(struct entry_cache* cache)
{
    char path[2 * cache_path_size];
    snprintf(path, sizeof path, "%s/lock", cache->folder);
    const int fd = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0)
        return claim_impossible;
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const bool busy = errno == EWOULDBLOCK;
        close(fd);
        return busy ? claim_busy : claim_impossible;
    }
    /* The book may have been evicted between the open and the lock. */
    struct stat held, named;
    if (fstat(fd, &held) != 0 || stat(path, &named) != 0 || held.st_ino != named.st_ino
        || held.st_dev != named.st_dev) {
        close(fd);
        return claim_impossible;
    }
    cache->lock = fd;
    return claim_taken;
}

/* Waits until the filler this run started has passed wanted, kept or not,
 * or has ended. */
static void wait_for_filler(int from, uint64_t wanted)
{
    uint64_t buffer[512];
    size_t held = 0; /* bytes of a hash read in part */
    for (;;) {
        const ssize_t count = read(from, (char*)buffer + held, sizeof buffer - held);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        held += (size_t)count;
        for (size_t i = 0; i < held / sizeof *buffer; ++i) {
            if (buffer[i] == wanted)
                return;
        }
        const size_t whole = held / sizeof *buffer * sizeof *buffer;
        memmove(buffer, (char*)buffer + whole, held - whole);
        held -= whole;
    }
}

static int64_t now_ms(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (int64_t)now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

static bool finish(enum served served, int* status)
{
    if (served == served_no)
        return false;
    *status = served == served_yes ? 0 : 1;
    return true;
}

/* This run holds the lock: starts the filler and prints the entry once the
 * filler has kept it. */
static bool fill_and_print(struct entry_cache* cache, const char* wanted, FILE* out, int* status)
{
    int pipe_fds[2];
    fflush(NULL);
    if (pipe(pipe_fds) != 0)
        return false;
    const pid_t child = fork();
    if (child == 0) {
        close(pipe_fds[0]);
        cache->awaited = name_hash(wanted);
        cache_filler_run(cache, pipe_fds[1]);
    }
    close(pipe_fds[1]);
    close(cache->lock);
    cache->lock = -1;
    if (child < 0) {
        close(pipe_fds[0]);
        return false;
    }
    wait_for_filler(pipe_fds[0], name_hash(wanted));
    close(pipe_fds[0]);
    /* What is there is served; a name the filler did not keep (damaged,
     * missing, too large) is extracted as without a cache. */
    return finish(serve(cache, wanted, out), status);
}

bool entry_cache_print(const char* path, const char* wanted, FILE* out, int* status)
{
    struct entry_cache* cache = calloc(1, sizeof *cache);
    if (!cache)
        return false;
    cache->fd = -1;
    cache->lock = -1;
    cache->notify = -1;
    cache->out = -1;
    bool handled = false;
    char* canonical = NULL;
    if (!cache_settings_read(&cache->settings))
        goto done;
    cache->fd = open(path, O_RDONLY | O_CLOEXEC);
    if (cache->fd < 0 || !archive_is_solid(cache->fd)
        || !book_identity_of(cache->fd, &cache->identity) || !(canonical = realpath(path, NULL))
        || !cache_book_folder(
            &cache->settings, canonical, &cache->identity, cache->folder, sizeof cache->folder))
        goto done;

    const int64_t deadline = now_ms() + wait_limit_ms;
    for (;;) {
        if ((handled = finish(serve(cache, wanted, out), status)))
            break;
        const enum claim claimed = claim(cache);
        if (claimed == claim_taken) {
            /* The filler before may have kept it just before it let go. */
            handled = finish(serve(cache, wanted, out), status)
                || fill_and_print(cache, wanted, out, status);
            break;
        }
        if (claimed == claim_impossible || now_ms() >= deadline)
            break;
        /* Another run's filler is at work: it reaches the entry sooner
         * than this run would, having started first. */
        const struct timespec interval = { 0, poll_interval_ns };
        nanosleep(&interval, NULL);
    }
done:
    free(canonical);
    if (cache->lock >= 0)
        close(cache->lock);
    if (cache->fd >= 0)
        close(cache->fd);
    free(cache->seen);
    free(cache);
    return handled;
}
