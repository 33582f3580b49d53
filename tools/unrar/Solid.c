/* SPDX-License-Identifier: MIT */
/* Telling a solid archive from its headers, without decompressing any entry.
 * libarchive reads solid archives but does not say that they are. */
#define _XOPEN_SOURCE 700

#include "Solid.h"

#include <lzma.h>

#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

/* Headers larger than this are not looked into: a comic's is a few KB, and
 * one of a hundred thousand entries a few MB. */
static const uint64_t header_limit = 4u << 20;

static bool read_at(int fd, void* buffer, size_t size, uint64_t offset)
{
    unsigned char* at = buffer;
    while (size > 0) {
        const ssize_t count = pread(fd, at, size, (off_t)offset);
        if (count <= 0)
            return false;
        at += count;
        size -= (size_t)count;
        offset += (uint64_t)count;
    }
    return true;
}

/* --- RAR ------------------------------------------------------------------- */

/* RAR 4: the main header follows the 7-byte mark; bit 3 of its flags is
 * "solid". */
static bool rar4_is_solid(const unsigned char* head, size_t size)
{
    return size >= 12 && head[9] == 0x73 && (head[10] & 0x08) != 0;
}

/* RAR 5's variable-length integers: 7 bits a byte, low bits first. */
static bool rar5_number(const unsigned char** at, const unsigned char* end, uint64_t* value)
{
    *value = 0;
    for (int shift = 0; shift < 64 && *at < end; shift += 7) {
        const unsigned char byte = *(*at)++;
        *value |= (uint64_t)(byte & 0x7f) << shift;
        if (!(byte & 0x80))
            return true;
    }
    return false;
}

/* RAR 5: after the 8-byte mark, the main archive header (type 1) carries
 * archive flags, of which bit 2 is "solid". An encryption header (type 4)
 * comes first when the headers are encrypted: then nothing can be told. */
static bool rar5_is_solid(const unsigned char* head, size_t size)
{
    const unsigned char* at = head + 8 + 4; /* the mark, the header's CRC */
    const unsigned char* end = head + size;
    uint64_t header_size, type, flags, skipped, archive_flags;
    if (!rar5_number(&at, end, &header_size) || !rar5_number(&at, end, &type) || type != 1
        || !rar5_number(&at, end, &flags))
        return false;
    if ((flags & 0x01) && !rar5_number(&at, end, &skipped)) /* extra area's size */
        return false;
    if ((flags & 0x02) && !rar5_number(&at, end, &skipped)) /* data area's size */
        return false;
    return rar5_number(&at, end, &archive_flags) && (archive_flags & 0x04) != 0;
}

/* --- 7z -------------------------------------------------------------------- */

enum {
    k_end = 0x00,
    k_header = 0x01,
    k_archive_properties = 0x02,
    k_additional_streams = 0x03,
    k_main_streams = 0x04,
    k_pack_info = 0x06,
    k_unpack_info = 0x07,
    k_substreams_info = 0x08,
    k_size = 0x09,
    k_crc = 0x0a,
    k_folder = 0x0b,
    k_coders_unpack_size = 0x0c,
    k_num_unpack_stream = 0x0d,
    k_encoded_header = 0x17,
};

struct cursor
{
    const unsigned char* at;
    const unsigned char* end;
    bool bad;
};

static unsigned byte_of(struct cursor* c)
{
    if (c->at >= c->end) {
        c->bad = true;
        return 0;
    }
    return *c->at++;
}

/* 7z's numbers: the leading 1 bits of the first byte say how many bytes
 * follow, low bytes first; the first byte's remaining bits are the top. */
static uint64_t number_of(struct cursor* c)
{
    const unsigned first = byte_of(c);
    uint64_t value = 0;
    unsigned mask = 0x80;
    for (int i = 0; i < 8; ++i, mask >>= 1) {
        if (!(first & mask))
            return value | ((uint64_t)(first & (mask - 1)) << (8 * i));
        value |= (uint64_t)byte_of(c) << (8 * i);
    }
    return value;
}

/* A count that must fit what is left of the header, so that a hostile count
 * cannot make a loop run long. */
static uint64_t count_of(struct cursor* c)
{
    const uint64_t count = number_of(c);
    if (count > (uint64_t)(c->end - c->at))
        c->bad = true;
    return c->bad ? 0 : count;
}

static void skip(struct cursor* c, uint64_t size)
{
    if (size > (uint64_t)(c->end - c->at)) {
        c->bad = true;
        c->at = c->end;
    } else {
        c->at += size;
    }
}

static void skip_digests(struct cursor* c, uint64_t count)
{
    uint64_t defined = count;
    if (byte_of(c) == 0) { /* not all defined: a bit for each */
        defined = 0;
        unsigned bits = 0;
        for (uint64_t i = 0; i < count && !c->bad; ++i) {
            if (i % 8 == 0)
                bits = byte_of(c);
            defined += (bits >> (7 - i % 8)) & 1;
        }
    }
    skip(c, defined * 4);
}

static void skip_pack_info(struct cursor* c, uint64_t* position, uint64_t* first_size)
{
    *position = number_of(c);
    const uint64_t streams = count_of(c);
    *first_size = 0;
    for (unsigned id; !c->bad && (id = byte_of(c)) != k_end;) {
        if (id == k_size) {
            for (uint64_t i = 0; i < streams && !c->bad; ++i) {
                const uint64_t size = number_of(c);
                if (i == 0)
                    *first_size = size;
            }
        } else if (id == k_crc) {
            skip_digests(c, streams);
        } else {
            c->bad = true;
        }
    }
}

/* The one coder of a folder whose method and properties are kept (the
 * header's folder has one); out_streams counts all of the folder's. */
struct coder
{
    uint64_t method;
    const unsigned char* properties;
    size_t properties_size;
    uint64_t coders;
};

static uint64_t read_folder(struct cursor* c, struct coder* coder)
{
    const uint64_t coders = count_of(c);
    uint64_t in_streams = 0, out_streams = 0;
    memset(coder, 0, sizeof *coder);
    coder->coders = coders;
    for (uint64_t i = 0; i < coders && !c->bad; ++i) {
        const unsigned flags = byte_of(c);
        const unsigned id_size = flags & 0x0f;
        uint64_t method = 0;
        for (unsigned b = 0; b < id_size; ++b)
            method = method << 8 | byte_of(c);
        if (flags & 0x10) {
            in_streams += count_of(c);
            out_streams += count_of(c);
        } else {
            ++in_streams;
            ++out_streams;
        }
        if (flags & 0x20) {
            const uint64_t size = count_of(c);
            if (i == 0) {
                coder->properties = c->at;
                coder->properties_size = (size_t)size;
            }
            skip(c, size);
        }
        if (flags & 0x80) /* alternative methods: never written */
            c->bad = true;
        if (i == 0)
            coder->method = method;
    }
    if (out_streams == 0) {
        c->bad = true;
        return 0;
    }
    const uint64_t bind_pairs = out_streams - 1;
    for (uint64_t i = 0; i < bind_pairs && !c->bad; ++i) {
        number_of(c);
        number_of(c);
    }
    if (in_streams < bind_pairs) {
        c->bad = true;
        return 0;
    }
    const uint64_t packed = in_streams - bind_pairs;
    if (packed > 1) {
        for (uint64_t i = 0; i < packed && !c->bad; ++i)
            number_of(c);
    }
    return out_streams;
}

/* What a streams record says: whether some folder holds more than one file,
 * and for an encoded header, where its one folder's packed bytes lie and how
 * to unpack them. */
struct streams
{
    bool solid;
    uint64_t pack_position;
    uint64_t pack_size;
    uint64_t folders;
    struct coder coder;
    uint64_t unpack_size;
};

static void read_streams(struct cursor* c, struct streams* s)
{
    memset(s, 0, sizeof *s);
    unsigned id = byte_of(c);
    if (id == k_pack_info) {
        skip_pack_info(c, &s->pack_position, &s->pack_size);
        id = byte_of(c);
    }
    if (id == k_unpack_info) {
        if (byte_of(c) != k_folder)
            c->bad = true;
        s->folders = count_of(c);
        if (byte_of(c) != 0) /* folders kept elsewhere: never written */
            c->bad = true;
        /* Each folder's output streams, in order, for the sizes below;
         * bounded by count_of, so it fits in memory as the header does. */
        uint64_t* outs = s->folders ? calloc((size_t)s->folders, sizeof *outs) : NULL;
        if (s->folders && !outs)
            c->bad = true;
        for (uint64_t i = 0; i < s->folders && !c->bad; ++i) {
            struct coder coder;
            outs[i] = read_folder(c, &coder);
            if (i == 0)
                s->coder = coder;
        }
        if (byte_of(c) != k_coders_unpack_size)
            c->bad = true;
        for (uint64_t i = 0; i < s->folders && !c->bad; ++i) {
            for (uint64_t j = 0; j < outs[i] && !c->bad; ++j) {
                const uint64_t size = number_of(c);
                if (i == 0 && j == 0)
                    s->unpack_size = size;
            }
        }
        free(outs);
        for (; !c->bad && (id = byte_of(c)) != k_end;) {
            if (id == k_crc)
                skip_digests(c, s->folders);
            else
                c->bad = true;
        }
        id = byte_of(c);
    }
    if (id == k_substreams_info) {
        /* Only the first record matters: files in each folder. Without it,
         * each folder holds one file. */
        if (byte_of(c) == k_num_unpack_stream) {
            for (uint64_t i = 0; i < s->folders && !c->bad; ++i) {
                if (number_of(c) > 1)
                    s->solid = true;
            }
        }
        return;
    }
    if (id != k_end)
        c->bad = true;
}

/* Unpacks an encoded header: one folder of one LZMA or LZMA2 coder, as 7-Zip
 * writes them. Returns the bytes (malloc'ed) or NULL. */
static unsigned char* unpack_header(int fd, const struct streams* s, size_t* size)
{
    if (s->folders != 1 || s->coder.coders != 1 || s->unpack_size == 0
        || s->unpack_size > header_limit || s->pack_size == 0 || s->pack_size > header_limit
        || s->pack_position > UINT64_MAX - 32 - s->pack_size)
        return NULL;
    lzma_filter filters[2] = { { 0 }, { LZMA_VLI_UNKNOWN, NULL } };
    if (s->coder.method == 0x030101)
        filters[0].id = LZMA_FILTER_LZMA1;
    else if (s->coder.method == 0x21)
        filters[0].id = LZMA_FILTER_LZMA2;
    else
        return NULL;
    if (lzma_properties_decode(&filters[0], NULL, s->coder.properties, s->coder.properties_size)
        != LZMA_OK)
        return NULL;
    /* No more history than the header itself is ever needed: a dictionary
     * the size of the archive's would be allocated for nothing. */
    lzma_options_lzma* options = filters[0].options;
    if (options->dict_size > s->unpack_size)
        options->dict_size
            = s->unpack_size < LZMA_DICT_SIZE_MIN ? LZMA_DICT_SIZE_MIN : (uint32_t)s->unpack_size;

    unsigned char* packed = malloc((size_t)s->pack_size);
    unsigned char* unpacked = malloc((size_t)s->unpack_size);
    lzma_stream stream = LZMA_STREAM_INIT;
    bool done = packed && unpacked
        && read_at(fd, packed, (size_t)s->pack_size, 32 + s->pack_position)
        && lzma_raw_decoder(&stream, filters) == LZMA_OK;
    if (done) {
        stream.next_in = packed;
        stream.avail_in = (size_t)s->pack_size;
        stream.next_out = unpacked;
        stream.avail_out = (size_t)s->unpack_size;
        const lzma_ret status = lzma_code(&stream, LZMA_FINISH);
        done = (status == LZMA_OK || status == LZMA_STREAM_END) && stream.avail_out == 0;
    }
    lzma_end(&stream);
    free(options);
    free(packed);
    if (!done) {
        free(unpacked);
        return NULL;
    }
    *size = (size_t)s->unpack_size;
    return unpacked;
}

static bool seven_zip_is_solid(int fd, const unsigned char* start)
{
    uint64_t offset = 0, size = 0;
    for (int i = 0; i < 8; ++i) {
        offset |= (uint64_t)start[12 + i] << (8 * i);
        size |= (uint64_t)start[20 + i] << (8 * i);
    }
    if (size == 0 || size > header_limit || offset > UINT64_MAX - 32 - size)
        return false;
    unsigned char* header = malloc((size_t)size);
    if (!header || !read_at(fd, header, (size_t)size, 32 + offset)) {
        free(header);
        return false;
    }
    bool solid = false;
    /* An encoded header unpacks to a header, which 7-Zip never encodes
     * twice; a few rounds are allowed all the same. */
    for (int round = 0; round < 4; ++round) {
        struct cursor c = { header, header + size, false };
        const unsigned id = byte_of(&c);
        struct streams streams;
        if (id == k_encoded_header) {
            read_streams(&c, &streams);
            size_t unpacked_size = 0;
            unsigned char* unpacked = c.bad ? NULL : unpack_header(fd, &streams, &unpacked_size);
            free(header);
            if (!unpacked)
                return false;
            header = unpacked;
            size = unpacked_size;
            continue;
        }
        if (id != k_header)
            break;
        unsigned next = byte_of(&c);
        if (next == k_archive_properties) {
            while (!c.bad && byte_of(&c) != 0)
                skip(&c, number_of(&c));
            next = byte_of(&c);
        }
        if (next == k_additional_streams) {
            read_streams(&c, &streams);
            next = byte_of(&c);
        }
        if (next == k_main_streams && !c.bad) {
            read_streams(&c, &streams);
            solid = !c.bad && streams.solid;
        }
        break;
    }
    free(header);
    return solid;
}

bool archive_is_solid(int fd)
{
    unsigned char head[64];
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const size_t size = status.st_size < (off_t)sizeof head ? (size_t)status.st_size : sizeof head;
    if (size < 12 || !read_at(fd, head, size, 0))
        return false;
    if (memcmp(head, "Rar!\x1a\x07\x00", 7) == 0)
        return rar4_is_solid(head, size);
    if (memcmp(head, "Rar!\x1a\x07\x01\x00", 8) == 0)
        return rar5_is_solid(head, size);
    if (size >= 32 && memcmp(head, "7z\xbc\xaf\x27\x1c", 6) == 0)
        return seven_zip_is_solid(fd, head);
    return false;
}
