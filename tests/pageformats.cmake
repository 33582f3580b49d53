# SPDX-License-Identifier: MIT
# WebP, AVIF and JPEG XL pages through the image plug-ins in bin/imageformats.
# The suite makes its files with the formats' own tools and checks against
# their decoders.
tamber_add_test(tst_pageformats tst_pageformats.cpp LABELS archive)
# The image plug-ins' memory limit, which the JPEG XL budget's rows are held to.
target_include_directories(tst_pageformats PRIVATE ${PROJECT_SOURCE_DIR}/imageformats)
