# SPDX-License-Identifier: MIT
# WebP, AVIF and JPEG XL pages through the image plug-ins in bin/imageformats.
# The suite makes its files with the formats' own tools and checks against
# their decoders.
tamber_add_test(tst_pageformats tst_pageformats.cpp LABELS archive)
# The image plug-ins' memory limit, which the JPEG XL budget's rows are held to.
target_include_directories(tst_pageformats PRIVATE ${PROJECT_SOURCE_DIR}/imageformats)
# On ARM, the same decodes on a core without VFPv4 (Cortex-A9), where highway
# runs libjxl's scalar code and the JPEG XL handler makes the bytes itself.
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL "arm")
  add_test(NAME tst_pageformats_cortex_a9 COMMAND tst_pageformats ${TAMBER_TEST_ARGUMENTS} decodes)
  tamber_test_environment(tst_pageformats_cortex_a9)
  get_test_property(tst_pageformats_cortex_a9 ENVIRONMENT environment)
  set_tests_properties(tst_pageformats_cortex_a9 PROPERTIES ENVIRONMENT "${environment};QEMU_CPU=cortex-a9"
    TIMEOUT 300 LABELS archive SKIP_RETURN_CODE 77)
endif()
