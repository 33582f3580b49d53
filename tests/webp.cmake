# SPDX-License-Identifier: MIT
# WebP pages through the image plug-in in bin/imageformats. The suite makes
# its files with libwebp's tools, cwebp and img2webp.
tamber_add_test(tst_webp tst_webp.cpp LABELS archive)
# AVIF and JPEG XL pages, made by avifenc and cjxl and checked against avifdec and djxl.
tamber_add_test(tst_pageformats tst_pageformats.cpp LABELS archive)
