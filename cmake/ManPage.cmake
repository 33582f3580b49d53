# SPDX-License-Identifier: MIT
# Writes the manual page that "tamber --man" prints.
#   cmake -DTAMBER=PROGRAM -DOUTPUT=FILE -P ManPage.cmake
set(ENV{QT_QPA_PLATFORM} offscreen)
# In a sanitizer build, what Qt leaks at exit must not fail the build.
if(DEFINED ENV{ASAN_OPTIONS} AND NOT "$ENV{ASAN_OPTIONS}" STREQUAL "")
  set(ENV{ASAN_OPTIONS} "$ENV{ASAN_OPTIONS}:detect_leaks=0")
else()
  set(ENV{ASAN_OPTIONS} detect_leaks=0)
endif()
execute_process(COMMAND ${TAMBER} --man OUTPUT_FILE ${OUTPUT}.new
  ERROR_VARIABLE errors RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  file(REMOVE ${OUTPUT}.new)
  message(FATAL_ERROR "tamber --man failed (${status}): ${errors}")
endif()
file(RENAME ${OUTPUT}.new ${OUTPUT})
