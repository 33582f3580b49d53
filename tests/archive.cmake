# SPDX-License-Identifier: MIT
# Comic archives: the factory, ZIP and single images in one suite; the RAR
# suite runs the real extractor program too.
tamber_add_test(tst_archives tst_archives.cpp LABELS archive)
tamber_add_test(tst_rararchive tst_rararchive.cpp LABELS archive)

# The RAR archive with stand-in extractors: the suite writes them as "unrar"
# into its own folder, the application folder the archive runs them from.
tamber_add_test(tst_rararchive_standins tst_rararchive_standins.cpp LABELS archive)
set_target_properties(tst_rararchive_standins PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/rar-standins)
# A hanging extractor costs the archive's full 30 s time-out, so that case runs
# as a test of its own, labelled slow. Both share the stand-in folder.
add_test(NAME tst_rararchive_standins_hang
  COMMAND tst_rararchive_standins ${TAMBER_TEST_ARGUMENTS} abandonsHangingExtractor)
get_test_property(tst_rararchive_standins ENVIRONMENT standins_environment)
set_tests_properties(tst_rararchive_standins_hang PROPERTIES
  ENVIRONMENT "${standins_environment};TAMBER_SLOW_TESTS=1"
  LABELS "archive;slow" TIMEOUT 300)
set_tests_properties(tst_rararchive_standins tst_rararchive_standins_hang PROPERTIES
  RESOURCE_LOCK rar-standins)
