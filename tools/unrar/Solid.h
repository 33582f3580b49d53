/* SPDX-License-Identifier: MIT */
#ifndef SOLID_H
#define SOLID_H

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Whether the archive open on fd is solid: a 7z archive whose blocks hold
 * more than one file, or a RAR 4 or RAR 5 archive marked solid. In such an
 * archive an entry can only be reached by decompressing the entries before
 * it. False for ZIP, for archives that are not solid and for anything that
 * cannot be told from the headers (a self-extracting stub, encrypted
 * headers, a damaged file). Reads the file with pread only. */
bool archive_is_solid(int fd);

#ifdef __cplusplus
}
#endif

#endif
