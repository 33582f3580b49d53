/* SPDX-License-Identifier: MIT */
/* Hidden stand-ins for what Debian's glibc 2.36 and GCC 12 would import from
 * glibc versions newer than the device's (2.15 to 2.19): linked into every
 * armhf program and library, they keep those imports out. */
#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <unistd.h>

#define HIDDEN __attribute__((visibility("hidden")))

struct stat;
struct stat64;

/* stat and friends became functions of their own in 2.33; before, they were
 * inline wrappers of these, which later versions still export. 3 is ARM's
 * _STAT_VER. */
int __xstat(int, const char*, struct stat*);
int __fxstat(int, int, struct stat*);
int __lxstat(int, const char*, struct stat*);
int __xstat64(int, const char*, struct stat64*);
int __fxstat64(int, int, struct stat64*);
int __lxstat64(int, const char*, struct stat64*);
__asm__(".symver __xstat,__xstat@GLIBC_2.4");
__asm__(".symver __fxstat,__fxstat@GLIBC_2.4");
__asm__(".symver __lxstat,__lxstat@GLIBC_2.4");
__asm__(".symver __xstat64,__xstat64@GLIBC_2.4");
__asm__(".symver __fxstat64,__fxstat64@GLIBC_2.4");
__asm__(".symver __lxstat64,__lxstat64@GLIBC_2.4");

HIDDEN int stat(const char* path, struct stat* buf) { return __xstat(3, path, buf); }
HIDDEN int fstat(int fd, struct stat* buf) { return __fxstat(3, fd, buf); }
HIDDEN int lstat(const char* path, struct stat* buf) { return __lxstat(3, path, buf); }
HIDDEN int stat64(const char* path, struct stat64* buf) { return __xstat64(3, path, buf); }
HIDDEN int fstat64(int fd, struct stat64* buf) { return __fxstat64(3, fd, buf); }
HIDDEN int lstat64(const char* path, struct stat64* buf) { return __lxstat64(3, path, buf); }

/* 2.32: libstdc++ skips atomic reference counts while it reads 1. Never
 * claiming a single thread is always right. */
HIDDEN char __libc_single_threaded = 0;

/* 2.25 and 2.36: std::random_device's sources, from /dev/urandom instead. */
HIDDEN int getentropy(void* buffer, size_t length)
{
    if (length > 256) {
        errno = EIO;
        return -1;
    }
    const int fd = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    size_t done = 0;
    while (done < length) {
        const ssize_t n = read(fd, (char*)buffer + done, length - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            close(fd);
            errno = EIO;
            return -1;
        }
        done += (size_t)n;
    }
    close(fd);
    return 0;
}

HIDDEN void arc4random_buf(void* buffer, size_t length)
{
    for (size_t done = 0; done < length; done += 256) {
        if (getentropy((char*)buffer + done, length - done < 256 ? length - done : 256) != 0)
            abort();
    }
}

HIDDEN uint32_t arc4random(void)
{
    uint32_t value;
    arc4random_buf(&value, sizeof value);
    return value;
}

/* libjxl's maths: 2.27 to 2.29 gave these new versions, a faster
 * implementation. The device has them under the ARM baseline, 2.4. */
#define BASELINE(name) __asm__(".symver __baseline_" #name "," #name "@GLIBC_2.4")

float __baseline_powf(float, float);
float __baseline_logf(float);
float __baseline_log2f(float);
float __baseline_hypotf(float, float);
double __baseline_exp(double);
double __baseline_pow(double, double);
BASELINE(powf);
BASELINE(logf);
BASELINE(log2f);
BASELINE(hypotf);
BASELINE(exp);
BASELINE(pow);
HIDDEN float powf(float x, float y) { return __baseline_powf(x, y); }
HIDDEN float logf(float x) { return __baseline_logf(x); }
HIDDEN float log2f(float x) { return __baseline_log2f(x); }
HIDDEN float hypotf(float x, float y) { return __baseline_hypotf(x, y); }
HIDDEN double exp(double x) { return __baseline_exp(x); }
HIDDEN double pow(double x, double y) { return __baseline_pow(x, y); }

/* 2.16: highway asks for AT_HWCAP to choose its code. The kernel's
 * auxiliary vector, from /proc. */
HIDDEN unsigned long getauxval(unsigned long type)
{
    unsigned long entry[2], value = 0;
    int found = 0;
    const int fd = open("/proc/self/auxv", O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
        while (read(fd, entry, sizeof entry) == (ssize_t)sizeof entry && entry[0] != 0) {
            if (entry[0] == type) {
                value = entry[1];
                found = 1;
                break;
            }
        }
        close(fd);
    }
    if (!found)
        errno = ENOENT;
    return value;
}
