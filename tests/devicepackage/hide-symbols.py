#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Copies a 32-bit little-endian ELF shared object with some of its dynamic
symbols made local: the dynamic linker skips local symbols when it looks for
a definition, so the copy no longer lends them to other objects, as a library
built without them would not. (objcopy's --localize-symbol leaves the dynamic
symbol table as it is.)

    hide-symbols.py IN OUT NAMES-FILE

NAMES-FILE holds one symbol name a line; each must be a defined dynamic
symbol of IN.
"""
import struct
import sys

SHT_DYNSYM = 11
STB_LOCAL = 0


def main():
    source, target, names_file = sys.argv[1:]
    with open(names_file) as f:
        names = set(f.read().split())
    with open(source, "rb") as f:
        data = bytearray(f.read())
    if data[:4] != b"\x7fELF" or data[4] != 1 or data[5] != 1:
        sys.exit(f"hide-symbols: {source} is not a 32-bit little-endian ELF file")

    shoff = struct.unpack_from("<I", data, 0x20)[0]
    shentsize, shnum = struct.unpack_from("<HH", data, 0x2E)
    # sh_name, type, flags, addr, offset, size, link, info, addralign, entsize
    sections = [struct.unpack_from("<10I", data, shoff + i * shentsize) for i in range(shnum)]

    hidden = set()
    for section in sections:
        if section[1] != SHT_DYNSYM:
            continue
        offset, size, link, entsize = section[4], section[5], section[6], section[9]
        strings = sections[link][4]
        for entry in range(offset + entsize, offset + size, entsize):
            name_at = strings + struct.unpack_from("<I", data, entry)[0]
            name = data[name_at : data.index(b"\0", name_at)].decode()
            shndx = struct.unpack_from("<H", data, entry + 14)[0]
            if name in names and shndx != 0:
                # st_info: binding in the high four bits, type in the low.
                data[entry + 12] = (STB_LOCAL << 4) | (data[entry + 12] & 0xF)
                hidden.add(name)

    missing = names - hidden
    if missing:
        sys.exit(f"hide-symbols: {source} defines no {' '.join(sorted(missing))}")
    with open(target, "wb") as f:
        f.write(data)
    print(f"hide-symbols: {len(hidden)} symbols of {source} made local in {target}")


if __name__ == "__main__":
    main()
