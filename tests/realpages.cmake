# SPDX-License-Identifier: MIT
# Pages as people make them, against another decoder's pixels. make-pages
# writes them with Debian's tools on the host, into the build tree, as ctest's
# fixture before the suite, which runs under qemu-arm on ARM like the others.
set(TAMBER_REALPAGES_DIR ${CMAKE_CURRENT_BINARY_DIR}/realpages)
tamber_add_test(tst_realpages tst_realpages.cpp LABELS archive)
target_compile_definitions(tst_realpages PRIVATE TAMBER_REALPAGES_DIR="${TAMBER_REALPAGES_DIR}")
add_dependencies(tst_realpages tamber-app comicsreader qwebp)
# Without Debian's python3 there are no pages, and the suite skips.
if(EXISTS /usr/bin/python3)
  add_test(NAME realpages-make
    COMMAND /usr/bin/python3 ${CMAKE_CURRENT_SOURCE_DIR}/realpages/make-pages ${TAMBER_REALPAGES_DIR})
  set_tests_properties(realpages-make PROPERTIES FIXTURES_SETUP realpages LABELS archive TIMEOUT 300)
  set_tests_properties(tst_realpages PROPERTIES FIXTURES_REQUIRED realpages)
endif()
