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
