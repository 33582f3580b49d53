# SPDX-License-Identifier: MIT
# The tamber program end to end, through the built binary and plug-in.
tamber_add_test(tst_tamber tst_tamber.cpp LABELS app)
add_dependencies(tst_tamber tamber-app comicsreader)

# Reading in a real window: "tamber read" on a virtual X server, driven with
# xdotool. Skipped without those tools or the samples. The device's Qt draws
# on its own screen, not X: there the session suite drives the same view.
if(TAMBER_QT EQUAL 4)
  return()
endif()
add_executable(tst_readwindow tst_readwindow.cpp)
target_link_libraries(tst_readwindow PRIVATE tamber_internal tamber_testsupport TamberQt::Test)
add_dependencies(tst_readwindow tamber-app comicsreader unrar)
add_test(NAME tst_readwindow
  COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/readwindow/xvfb.sh ${TAMBER_SAMPLES_DIR}
    $<TARGET_FILE:tst_readwindow>)
set_tests_properties(tst_readwindow PROPERTIES LABELS window SKIP_RETURN_CODE 77 TIMEOUT 300)
