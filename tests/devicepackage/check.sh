#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The device package as a reader gets it.
#
#   check.sh BUILD DEVICEHOST SAMPLES DEPS-PREFIX
#
# Makes the package with cpack in BUILD, then:
#  - reads its binaries: the plug-in needs only the C library family, Qt 4's
#    QtCore and QtGui and libtamber, and no symbol version above GLIBC_2.11 and
#    none of the C++ runtime's or GCC's; the extractor is fully static (no
#    program interpreter, no shared library). Each binary's highest GLIBC_
#    version is printed, so that a regression shows by its name.
#  - resolves each shared object's imports against the files of the libraries
#    that it names (the SDK's Qt, libtamber, the cross compiler's C library):
#    every undefined dynamic symbol, at its version, is defined by one of them;
#    none is a symbol of the static libraries that it links (DEPS-PREFIX's, the
#    C++ runtime, libgcc), which must come from its own copy, as zlib must
#    rather than from QtCore's export of Qt's; and each exports only Qt's
#    plug-in entry points.
#  - finds the licence and the notices of every library that the binaries
#    link statically, beside them, GCC's runtime and glibc's start files among
#    them.
#  - unpacks it into a scratch root and runs DEVICEHOST, a miniature host,
#    from the unpacked application folder: it loads the unpacked plug-in with
#    Qt's own loader and opens a comic of WebP pages made here, which Qt reads
#    through the unpacked image plug-in, JPEG XL comics on an emulated
#    Cortex-A7 (highway's NEON code) and Cortex-A9 (its portable code), whose
#    pages must agree, a 7z comic of LZMA2 named .cbr, whose pages come from
#    the unpacked extractor beside it,
#    and the shared RAR sample in SAMPLES (nothing here can write a RAR).
#    AVIF comics of 8 and 10 bits a sample go through the AVIF plug-in.
#  - loads the plug-in with a copy of the SDK's QtCore whose zlib symbols are
#    made local (the dynamic linker skips them), as a Qt built on a shared
#    zlib would be, and reads a deflated comic: a plug-in that took inflate
#    or crc32 from QtCore stops there with "undefined symbol". A probe that
#    takes inflateEnd from QtCore shows that the copy lends it no more. Under
#    the real QtCore, the C library's record of bindings shows no symbol of a
#    static library bound from a packaged plug-in to another object.
# Without the sample, says "skipped: " why and exits 77 when nothing failed.
set -euo pipefail
build=$1 host=$2 samples=$3 deps=$4
baseline=2.11
readelf=arm-linux-gnueabihf-readelf
objdump=arm-linux-gnueabihf-objdump
nm=arm-linux-gnueabihf-nm
cc=arm-linux-gnueabihf-gcc  # as cmake/toolchain-armhf.cmake
sdk_lib=$(ls -d "$build"/qt-*-armhf/lib | head -n 1)
c_lib=/usr/arm-linux-gnueabihf/lib

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

c_library='^(libc\.so\.6|libm\.so\.6|libpthread\.so\.0|libdl\.so\.2|ld-linux-armhf\.so\.3)$'
check_library "$app/plugins/libcomicsreader.so" "$c_library|^(libQtCore\.so\.4|libQtGui\.so\.4|libtamber\.so\.0)$"
for plugin in "$app"/imageformats/*.so; do
  [ -e "$plugin" ] && check_library "$plugin" "$c_library|^(libQtCore\.so\.4|libQtGui\.so\.4)$"
done
for format in webp avif jxl; do
  [ -e "$app/imageformats/libq$format.so" ] || fail "the package holds no imageformats/libq$format.so"
done

# The global symbols of every static library that the binaries link: ours, the
# compat stand-ins, and the cross compiler's C++ runtime and libgcc.
statics=("$deps"/glibc/lib/*.a "$deps/glibc/lib/glibc-compat.o")
for archive in libstdc++.a libgcc.a libgcc_eh.a; do
  statics+=("$(${cc/gcc/g++} -print-file-name="$archive")")
done
$nm -g --defined-only "${statics[@]}" 2>/dev/null | awk 'NF == 3 { print $3 }' | sort -u \
  >"$scratch/static-symbols"
[ -s "$scratch/static-symbols" ] || fail "no symbols in the static libraries under $deps"

# A NEEDED library's file, where the device's loader would find its stand-in.
library_file() {
  local dir
  for dir in "$sdk_lib" "$build/bin" "$c_lib"; do
    [ -e "$dir/$1" ] && { echo "$dir/$1"; return; }
  done
}

resolves_own() { # FILE: each import from the libraries it names, none of ours
  local file=$1 name library path
  name=${file#"$scratch/root/"}
  : >"$scratch/defined"
  for library in $($readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    path=$(library_file "$library")
    [ -n "$path" ] || { fail "$name needs $library, found nowhere"; continue; }
    # name@@V is the default version: it also serves an unversioned import.
    $nm -D --defined-only "$path" | awk '{ n = $NF; d = n; sub(/@@/, "@", d); print d
      if (n ~ /@@/) { sub(/@@.*/, "", n); print n } }' >>"$scratch/defined"
  done
  sort -u -o "$scratch/defined" "$scratch/defined"
  $nm -D --undefined-only "$file" | awk '$1 == "U" { print $2 }' | sort -u >"$scratch/imports"
  local unresolved borrowed exported
  unresolved=$(comm -23 "$scratch/imports" "$scratch/defined" | tr '\n' ' ')
  [ -z "$unresolved" ] || fail "$name imports what none of its NEEDED libraries defines: $unresolved"
  # An import at a GLIBC_ version is the C library's by design (glibc-compat
  # binds libjxl's maths to GLIBC_2.4); the others must not be what we link.
  borrowed=$(grep -v '@GLIBC_' "$scratch/imports" | sed 's/@.*//' | sort -u \
    | comm -12 - "$scratch/static-symbols" | tr '\n' ' ')
  [ -z "$borrowed" ] || fail "$name takes from a shared library what it links statically: $borrowed"
  exported=$($nm -D --defined-only "$file" | awk '{ print $NF }' \
    | grep -vxE 'qt_plugin_(instance|query_verification_data)' | tr '\n' ' ') || true
  [ -z "$exported" ] || fail "$name exports more than Qt's plug-in entry points: $exported"
  echo "$name: $(wc -l <"$scratch/imports") imports, each from a library it names"
}
resolves_own "$app/plugins/libcomicsreader.so"
for plugin in "$app"/imageformats/*.so; do
  resolves_own "$plugin"
done

unrar=$app/unrar
echo "lib/tamber/unrar: $(stat -c %s "$unrar") bytes"
$readelf -d "$unrar" | grep -q NEEDED && fail "the extractor needs shared libraries"
$readelf -l "$unrar" | grep -q INTERP && fail "the extractor names a program interpreter"

doc=$scratch/root/share/doc/tamber-comics
[ -s "$doc/LICENSE" ] || fail "the package holds no LICENSE"
for library in zlib libzip libwebp libavif dav1d jpeg-xl highway brotli libarchive xz-utils musl \
  libstdc++ libgcc glibc; do
  # A section's title: the library, then its version or its package, then
  # which binaries hold it.
  awk -v library="$library" 'index($0, library) == 1 && substr($0, length(library) + 1) ~ /^[ -].*: .*(in|of) the/ { found = 1 }
    END { exit !found }' "$doc/THIRD-PARTY-NOTICES" 2>/dev/null \
    || fail "the package holds no notice of $library, which it links statically"
done

# The miniature host in the unpacked application folder, as the device's is.
cp "$host" "$app/devicehost"
open_book() { # BOOK WHAT PAGE-SUFFIX [COVER]: the host lists five pages and decodes the first (into COVER)
  local output
  output=$(cd "$scratch" && "$app/devicehost" "$1" ${4:+"$4"} -qws 2>&1) \
    || fail "the host could not read $2 through the package: $output"
  echo "$output"
  [ "$(grep -c "^page .*$3\$" <<<"$output")" -eq 5 ] || fail "$2 did not list five pages"
  grep -q '^cover [1-9][0-9]*x[1-9]' <<<"$output" || fail "the first page of $2 did not decode"
}

# Five pages of netpbm's patterns, a few hundred pixels each.
mkdir "$scratch/pages" "$scratch/webp"
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

# AVIF pages, of 8 and of 10 bits a sample: dav1d's two kinds of code.
for depth in 8 10; do
  mkdir "$scratch/avif$depth"
  for page in "$scratch"/pages/*.jpg; do
    avifenc --jobs 1 --speed 10 --depth "$depth" "$page" \
      "$scratch/avif$depth/$(basename "${page%.jpg}").avif" >/dev/null
  done
  (cd "$scratch/avif$depth" && zip -q "../avif$depth.cbz" ./*.avif)
  open_book "$scratch/avif$depth.cbz" "an AVIF comic of $depth bits" '\.avif'
done

# JPEG XL pages through the JPEG XL plug-in, on a core with NEON and VFPv4
# (Cortex-A7), where highway runs its NEON code, and on one without VFPv4
# (Cortex-A9), where it runs its portable code: the JPEGs recompressed without
# loss, lossless pages, and lossy ones (-d 1, through libjxl's smoothing
# filters). Both cores give a lossless page the same pixels; a lossy one
# differs by rounding (NEON fuses multiply-adds and flushes denormals), which
# stays far above 45 dB of PSNR, where a wrong lane or comparison does not.
mkdir "$scratch/jxl-jpeg" "$scratch/jxl-lossless" "$scratch/jxl-lossy"
# The lossy comic's first page, the one decoded, is larger and made from a
# fixed seed, so that the cores' rounding differs somewhere on it on every run.
ppmpat -randomseed=29 -camo 1200 1600 | pnmtojpeg -quality=95 >"$scratch/camo.jpg"
for page in "$scratch"/pages/*.jpg; do
  name=$(basename "${page%.jpg}").jxl
  cjxl --quiet --lossless_jpeg=1 "$page" "$scratch/jxl-jpeg/$name"
  cjxl --quiet --lossless_jpeg=0 -d 0 "$page" "$scratch/jxl-lossless/$name"
  lossy=$page
  [ "$name" != page1.jxl ] || lossy=$scratch/camo.jpg
  cjxl --quiet --lossless_jpeg=0 -d 1 "$lossy" "$scratch/jxl-lossy/$name"
done
for kind in jpeg lossless lossy; do
  (cd "$scratch/jxl-$kind" && zip -q "../jxl-$kind.cbz" ./*.jxl)
  for core in cortex-a7 cortex-a9; do
    QEMU_CPU=$core open_book "$scratch/jxl-$kind.cbz" "a JPEG XL comic ($kind) on a $core" '\.jxl' \
      "$scratch/jxl-$kind-$core.png"
  done
  a7=$scratch/jxl-$kind-cortex-a7.png a9=$scratch/jxl-$kind-cortex-a9.png
  [ -s "$a7" ] && [ -s "$a9" ] || continue
  if [ "$kind" = lossless ]; then
    cmp -s <(pngtopnm "$a7") <(pngtopnm "$a9") \
      || fail "the lossless JPEG XL page decodes to other pixels on a Cortex-A7 than on a Cortex-A9"
  else
    # Luma and chroma, in dB; "inf" where they are the same.
    psnr=$(pnmpsnr -machine <(pngtopnm "$a7") <(pngtopnm "$a9") 2>/dev/null)
    echo "JPEG XL ($kind), Cortex-A7 against Cortex-A9: PSNR $psnr dB"
    awk -v psnr="$psnr" 'BEGIN { n = split(psnr, v, " "); if (n == 0) exit 1
      for (i = 1; i <= n; ++i) if (v[i] != "inf" && v[i] + 0 < 45) exit 1 }' \
      || fail "the $kind JPEG XL page on a Cortex-A7 is far from the Cortex-A9's: PSNR $psnr dB"
    # The lossy page's filters round differently in NEON (some pixels of the
    # camouflage page differ by one): the same pixels on both cores mean that
    # the Cortex-A7 ran the portable code too.
    [ "$kind" != lossy ] || [ "$psnr" != "inf inf inf" ] \
      || fail "the lossy JPEG XL page decodes alike on both cores: highway's NEON code did not run"
  fi
done

# A 7z book named .cbr, LZMA2 as 7-Zip makes them: the extractor's liblzma.
(cd "$scratch/pages" && 7zz a -bd -t7z -m0=lzma2 ../lzma2.cbr ./*.jpg >/dev/null)
open_book "$scratch/lzma2.cbr" "a 7z comic of LZMA2" '\.jpg'

# A comic whose pages are deflated, so that the plug-in inflates them.
python3 - "$scratch/deflated.cbz" "$scratch"/pages/*.jpg <<'PY'
import os, sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as book:
    for page in sys.argv[2:]:
        book.write(page, os.path.basename(page))
PY

# QtCore without its zlib: a copy whose zlib symbols are local.
mkdir "$scratch/no-zlib"
$nm -g --defined-only "$deps/glibc/lib/libz.a" 2>/dev/null | awk 'NF == 3 { print $3 }' | sort -u \
  | comm -12 - <($nm -D --defined-only "$sdk_lib/libQtCore.so.4" | awk '{ print $NF }' | sort -u) \
  >"$scratch/zlib-symbols"
grep -qx inflate "$scratch/zlib-symbols" || fail "the SDK's QtCore exports no inflate to hide"
python3 "$(dirname "$0")/hide-symbols.py" "$sdk_lib/libQtCore.so.4" "$scratch/no-zlib/libQtCore.so.4" \
  "$scratch/zlib-symbols"
still=$($nm -D --defined-only "$scratch/no-zlib/libQtCore.so.4" | awk '$2 ~ /^[A-Z]$/ { print $3 }' \
  | sort | comm -12 - "$scratch/zlib-symbols" | tr '\n' ' ')
[ -z "$still" ] || fail "the copy of QtCore still exports $still"
# The probe takes inflateEnd from QtCore: it runs on the SDK's and not on the copy.
printf 'int inflateEnd(void*);\nint main(void) { return inflateEnd(0) == -2 ? 0 : 1; }\n' >"$scratch/probe.c"
$cc -o "$scratch/probe" "$scratch/probe.c" -L"$sdk_lib" -Wl,-rpath-link,"$sdk_lib" -lQtCore
"$scratch/probe" || fail "the probe did not take inflateEnd from the SDK's QtCore"
if LD_LIBRARY_PATH=$scratch/no-zlib:${LD_LIBRARY_PATH:-} "$scratch/probe" 2>/dev/null; then
  fail "the copy of QtCore still lends inflateEnd"
fi
# The host names its libraries with a run path, which LD_LIBRARY_PATH does not
# override: the copy is preloaded, in the emulated program only.
mkdir "$scratch/no-zlib-bindings"
QEMU_SET_ENV=LD_PRELOAD=$scratch/no-zlib/libQtCore.so.4,LD_DEBUG=bindings,LD_DEBUG_OUTPUT=$scratch/no-zlib-bindings/log \
  open_book "$scratch/deflated.cbz" "a deflated comic under a QtCore without zlib" '\.jpg'
grep -q "to $scratch/no-zlib/libQtCore.so.4 " "$scratch"/no-zlib-bindings/log.* \
  || fail "the host did not run on the copy of QtCore"

# The C library's own record of bindings, under the real QtCore: nothing that
# a packaged object links statically is bound from it to another object.
mkdir "$scratch/bindings"
QEMU_SET_ENV=LD_DEBUG=bindings,LD_DEBUG_OUTPUT=$scratch/bindings/log \
  open_book "$scratch/deflated.cbz" "a deflated comic, its bindings recorded" '\.jpg'
QEMU_SET_ENV=LD_DEBUG=bindings,LD_DEBUG_OUTPUT=$scratch/bindings/log \
  open_book "$scratch/avif8.cbz" "an AVIF comic, its bindings recorded" '\.avif'
# "PID: binding file FROM [0] to TO [0]: normal symbol `NAME' [VERSION]";
# symbols at a GLIBC_ version are the C library's.
cat "$scratch"/bindings/log.* | awk -v app="$app/" '$2 == "binding" && $3 == "file" && $12 !~ /GLIBC_/ {
    symbol = $11; gsub(/[`'"'"']/, "", symbol)
    if (index($4, app) == 1 && $4 != $7) print symbol
  }' | sort -u >"$scratch/bound"
[ -s "$scratch/bound" ] || fail "no bindings from the package were recorded"
# Weak imports may be met by anyone (libstdc++'s __cxa_pure_virtual, called
# only by a faulty program, is one).
$nm -D --undefined-only "$app"/plugins/*.so "$app"/imageformats/*.so | awk '$1 == "w" { print $2 }' \
  | sort -u >"$scratch/weak"
bound=$(comm -12 "$scratch/bound" "$scratch/static-symbols" | comm -23 - "$scratch/weak" | tr '\n' ' ')
[ -z "$bound" ] || fail "bound from the package to another object: $bound"
echo "bindings: $(wc -l <"$scratch/bound") symbols bound from the package to other objects, none of a static library"

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
