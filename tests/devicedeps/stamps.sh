#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# scripts/device-deps builds a part again whenever anything that shapes it
# changes, and only then:
#
#   stamps.sh SOURCE-DIR
#
# Copies the script and the files that it reads into a scratch tree, prints
# every part's stamp (--stamps), changes one thing at a time (a shared flag,
# a toolchain file, a function reached only through another, a compat source,
# the musl driver file) and checks that exactly the parts that it shapes, and
# those built on them, change their stamps. Printing stamps must build
# nothing, fetch nothing and need no SDK: the tools that would are stand-ins
# here that note their use.
set -euo pipefail
source=$1

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tree=$scratch/tree
mkdir -p "$tree"/{scripts,cmake,tools}
cp "$source"/scripts/{device-deps,glibc-compat.c} "$tree/scripts/"
cp "$source"/cmake/toolchain-armhf{,-musl}.cmake "$tree/cmake/"
cp -r "$source/tools/unrar" "$tree/tools/"
cp -r "$tree" "$scratch/pristine"
prefix=$tree/deps

mkdir "$scratch/bin"
for tool in apt-get apt dpkg dpkg-query sudo cmake ninja make tar qemu-arm \
  arm-linux-gnueabihf-gcc arm-linux-gnueabihf-g++ arm-linux-gnueabihf-readelf; do
  printf '#!/bin/sh\necho %s >>"%s/used"\nexit 1\n' "$tool" "$scratch" >"$scratch/bin/$tool"
  chmod +x "$scratch/bin/$tool"
done

failed=0
fail() { echo "FAIL: $*"; failed=1; }

stamps() { # OUTPUT
  PATH=$scratch/bin:$PATH bash "$tree/scripts/device-deps" armhf --stamps "$prefix" >"$1" \
    || fail "--stamps failed"
}
stamps "$scratch/before"
stamps "$scratch/again"
parts=$(wc -l <"$scratch/before")
[ "$parts" -eq 18 ] || fail "--stamps printed $parts parts, not 18: $(cut -d' ' -f1 "$scratch/before" | tr '\n' ' ')"
grep -qvE '^[a-z0-9-]+ +[0-9a-f]{40}$' "$scratch/before" && fail "not NAME STAMP lines: $(cat "$scratch/before")"
cmp -s "$scratch/before" "$scratch/again" || fail "two runs on the same tree gave different stamps"
[ ! -e "$prefix" ] || fail "--stamps wrote into PREFIX"
[ ! -e "$scratch/used" ] || fail "--stamps ran $(sort -u "$scratch/used" | tr '\n' ' ')"

# WHAT EXPECTED...: the parts whose stamps changed against before are EXPECTED;
# then the tree is as it was.
expect() {
  local what=$1 changed
  shift
  stamps "$scratch/after"
  changed=$(join <(sort "$scratch/before") <(sort "$scratch/after") \
    | awk '$2 != $3 { print $1 }' | sort | tr '\n' ' ')
  [ "$changed" = "$(printf '%s ' "$@" | tr ' ' '\n' | sort | grep . | tr '\n' ' ')" ] \
    || fail "$what changed the stamps of: ${changed:-nothing}; expected: $*"
  [ "$(wc -l <"$scratch/after")" -eq "$parts" ] || fail "$what changed the list of parts"
  rm -rf "$tree"
  cp -r "$scratch/pristine" "$tree"
}
edit() { # FILE SED-SCRIPT: fails the test when the script changes nothing
  sed -i "$2" "$tree/$1"
  cmp -s "$tree/$1" "$scratch/pristine/$1" && fail "the edit $2 left $1 as it was"
  return 0
}

# A shared flag: every part that compiles, and the parts built on them.
edit scripts/device-deps 's/^common_cflags="-O2 /common_cflags="-O2 -g /'
expect "common_cflags" zlib-glibc libzip-glibc libarchive-glibc libwebp-glibc libwebpmux-glibc \
  dav1d-glibc libavif-glibc brotli-glibc highway-glibc jpeg-xl-glibc glibc-compat zlib-musl \
  liblzma-musl libarchive-musl extractor

# Each toolchain file shapes its own variant's CMake builds, not the other's.
edit cmake/toolchain-armhf.cmake 's/-fdata-sections"/-fdata-sections -fno-common"/'
# dav1d is built by meson with a cross file of its own, and libavif on it.
expect "the glibc toolchain file" libzip-glibc libarchive-glibc libwebp-glibc libwebpmux-glibc \
  libavif-glibc brotli-glibc highway-glibc jpeg-xl-glibc
edit cmake/toolchain-armhf-musl.cmake 's/-static -Wl,--gc-sections/-static -Wl,--gc-sections -s/'
expect "the musl toolchain file" liblzma-musl libarchive-musl extractor

# cmake_lib, which libarchive's parts reach only through libarchive_for.
edit scripts/device-deps '/^cmake_lib() {/a\  local changed=1'
expect "cmake_lib" libzip-glibc libarchive-glibc libwebp-glibc libwebpmux-glibc libavif-glibc \
  brotli-glibc highway-glibc jpeg-xl-glibc liblzma-musl libarchive-musl extractor

# A function that the build functions never call directly: apt_sources
# reaches it.
edit scripts/device-deps '/^deb822_twins() {/a\  local changed=1'
expect "deb822_twins" sources musl-sysroot zlib-musl liblzma-musl libarchive-musl extractor qt-sysroot

edit scripts/glibc-compat.c '$a\/* changed */'
expect "glibc-compat.c" glibc-compat

# What dav1d is built with: libavif, built on it, follows.
edit scripts/device-deps 's/-Dbitdepths=8,16 /-Dbitdepths=8 /'
expect "dav1d's bit depths" dav1d-glibc libavif-glibc

# The compiler that musl-sysroot writes into PREFIX: every musl compile.
mkdir -p "$prefix/musl-sysroot/bin"
echo "# changed" >"$prefix/musl-sysroot/bin/musl-cc"
expect "the musl compiler" zlib-musl liblzma-musl libarchive-musl extractor

[ "$failed" -eq 0 ] && echo "every part's stamp follows what shapes it"
exit "$failed"
