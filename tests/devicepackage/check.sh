#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The device package as a reader gets it.
#
#   check.sh BUILD DEVICEHOST SAMPLES
#
# Makes the package with cpack in BUILD, then:
#  - reads its binaries: the plug-in needs only the C library family, Qt 4's
#    QtCore and QtGui and libtamber, and no symbol version above GLIBC_2.11 and
#    none of the C++ runtime's or GCC's; the extractor is fully static (no
#    program interpreter, no shared library). Each binary's highest GLIBC_
#    version is printed, so that a regression shows by its name.
#  - finds the licence and the notices of every library that the binaries
#    link statically, beside them, GCC's runtime and glibc's start files among
#    them.
#  - unpacks it into a scratch root and runs DEVICEHOST, a miniature host,
#    from the unpacked application folder: it loads the unpacked plug-in with
#    Qt's own loader and opens a comic of WebP pages made here, which Qt reads
#    through the unpacked image plug-in, the same in JPEG XL, a 7z comic of
#    LZMA2 named .cbr, whose pages come from the unpacked extractor beside it,
#    and the shared RAR sample in SAMPLES (nothing here can write a RAR).
# Without the sample, says "skipped: " why and exits 77 when nothing failed.
set -euo pipefail
build=$1 host=$2 samples=$3
baseline=2.11
readelf=arm-linux-gnueabihf-readelf
objdump=arm-linux-gnueabihf-objdump

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
(cd "$build" && cpack -B "$scratch/out" >/dev/null)
tarball=$(ls "$scratch"/out/tamber-comics-device-*-armhf.tar.gz)
echo "package: $(basename "$tarball"), $(stat -c %s "$tarball") bytes"
mkdir "$scratch/root"
tar -xzf "$tarball" -C "$scratch/root"
app=$scratch/root/lib/tamber

failed=0
fail() { echo "FAIL: $*"; failed=1; }

check_library() { # FILE ALLOWED-NEEDED-PATTERN
  local file=$1 allowed=$2 name
  name=${file#"$scratch/root/"}
  local needed
  needed=$($readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
  echo "$name: $(stat -c %s "$file") bytes; needs $(echo $needed)"
  for library in $needed; do
    [[ $library =~ $allowed ]] || fail "$name needs $library"
  done
  local versions highest
  versions=$($objdump -T "$file" | grep -oE '\b(GLIBC|GLIBCXX|CXXABI|GCC)_[0-9][0-9.]*' | sort -u)
  highest=$(echo "$versions" | grep '^GLIBC_' | sort -V | tail -n 1)
  echo "$name: highest ${highest:-no GLIBC_ version}"
  for version in $versions; do
    case $version in
      GLIBC_*)
        [ "$(printf '%s\n' "${version#GLIBC_}" "$baseline" | sort -V | tail -n 1)" = "$baseline" ] \
          || fail "$name references $version, above GLIBC_$baseline:$($objdump -T "$file" | grep -F "$version" | awk '{print " " $NF}' | tr -d '\n')"
        ;;
      *) fail "$name references $version of the C++ runtime or GCC" ;;
    esac
  done
}

c_library='^(libc\.so\.6|libm\.so\.6|libpthread\.so\.0|ld-linux-armhf\.so\.3)$'
check_library "$app/plugins/libcomicsreader.so" "$c_library|^(libQtCore\.so\.4|libQtGui\.so\.4|libtamber\.so\.0)$"
for plugin in "$app"/imageformats/*.so; do
  [ -e "$plugin" ] && check_library "$plugin" "$c_library|^(libQtCore\.so\.4|libQtGui\.so\.4)$"
done

unrar=$app/unrar
echo "lib/tamber/unrar: $(stat -c %s "$unrar") bytes"
$readelf -d "$unrar" | grep -q NEEDED && fail "the extractor needs shared libraries"
$readelf -l "$unrar" | grep -q INTERP && fail "the extractor names a program interpreter"

doc=$scratch/root/share/doc/tamber-comics
[ -s "$doc/LICENSE" ] || fail "the package holds no LICENSE"
for library in zlib libzip libwebp jpeg-xl highway brotli libarchive xz-utils musl \
  libstdc++ libgcc glibc; do
  # A section's title: the library, then its version or its package, then
  # which binaries hold it.
  awk -v library="$library" 'index($0, library) == 1 && substr($0, length(library) + 1) ~ /^[ -].*: .*(in|of) the/ { found = 1 }
    END { exit !found }' "$doc/THIRD-PARTY-NOTICES" 2>/dev/null \
    || fail "the package holds no notice of $library, which it links statically"
done

# The miniature host in the unpacked application folder, as the device's is.
cp "$host" "$app/devicehost"
open_book() { # BOOK WHAT PAGE-SUFFIX: the host lists five pages and decodes the first
  local output
  output=$(cd "$scratch" && "$app/devicehost" "$1" -qws) \
    || fail "the host could not read $2 through the package: $output"
  echo "$output"
  [ "$(grep -c "^page .*$3\$" <<<"$output")" -eq 5 ] || fail "$2 did not list five pages"
  grep -q '^cover [1-9][0-9]*x[1-9]' <<<"$output" || fail "the first page of $2 did not decode"
}

# Five pages of netpbm's patterns, a few hundred pixels each.
mkdir "$scratch/pages" "$scratch/webp" "$scratch/jxl"
n=0
for pattern in gingham2 madras tartan poles camo; do
  n=$((n + 1))
  ppmpat "-$pattern" 300 420 | pnmtojpeg >"$scratch/pages/page$n.jpg"
done

for page in "$scratch"/pages/*.jpg; do
  cwebp -quiet "$page" -o "$scratch/webp/$(basename "${page%.jpg}").webp"
done
(cd "$scratch/webp" && zip -q ../webp.cbz ./*.webp)
open_book "$scratch/webp.cbz" "a WebP comic" '\.webp'

# JPEG XL pages, the JPEGs recompressed without loss: the JPEG XL plug-in.
for page in "$scratch"/pages/*.jpg; do
  cjxl --quiet --lossless_jpeg=1 "$page" "$scratch/jxl/$(basename "${page%.jpg}").jxl"
done
(cd "$scratch/jxl" && zip -q ../jxl.cbz ./*.jxl)
open_book "$scratch/jxl.cbz" "a JPEG XL comic" '\.jxl'

# A 7z book named .cbr, LZMA2 as 7-Zip makes them: the extractor's liblzma.
(cd "$scratch/pages" && 7zz a -bd -t7z -m0=lzma2 ../lzma2.cbr ./*.jpg >/dev/null)
open_book "$scratch/lzma2.cbr" "a 7z comic of LZMA2" '\.jpg'

skipped=""
if [ -n "$samples" ] && [ -f "$samples/Captain Science #001-cbi.cbr" ]; then
  open_book "$samples/Captain Science #001-cbi.cbr" "the RAR sample" '\.jpg'
else
  skipped="the RAR comic: the shared samples are not beside the checkout"
fi

[ "$failed" -eq 0 ] || exit 1
if [ -n "$skipped" ]; then
  echo "skipped: $skipped"
  exit 77
fi
echo "the package holds what the device can load"
