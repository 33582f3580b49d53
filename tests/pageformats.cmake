# SPDX-License-Identifier: MIT
# WebP, AVIF and JPEG XL pages through the image plug-ins in bin/imageformats.
# The suite makes its files with the formats' own tools and checks against
# their decoders.
tamber_add_test(tst_pageformats tst_pageformats.cpp LABELS archive)
if(TARGET qavif)
  target_compile_definitions(tst_pageformats PRIVATE TAMBER_HAS_AVIF)
endif()
