# SPDX-License-Identifier: MIT
# WebP pages through the image plug-in in bin/imageformats. The suite makes
# its files with libwebp's tools, cwebp and img2webp.
tamber_add_test(tst_webp tst_webp.cpp LABELS archive)
