# The reading view where no trace can see it: meta-object, pixels, pans,
# touch, dog ears from the store. Its traces are checked by tst_session.
tamber_add_test(tst_reader tst_reader.cpp LABELS reader)

# The host's gesture framework: recognizers, receiver, panning mixin.
tamber_add_test(tst_gestures tst_gestures.cpp LABELS host)

# Reading in a real window: "tamber read" on a virtual X server, driven with
# xdotool. Skipped without those tools or the samples.
add_executable(tst_readwindow tst_readwindow.cpp)
target_link_libraries(tst_readwindow PRIVATE tamber_internal tamber_testsupport TamberQt::Test)
add_dependencies(tst_readwindow tamber-app comicsreader unrar)
add_test(NAME tst_readwindow
  COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/readwindow/xvfb.sh ${TAMBER_SAMPLES_DIR}
    $<TARGET_FILE:tst_readwindow>)
set_tests_properties(tst_readwindow PROPERTIES LABELS window SKIP_RETURN_CODE 77 TIMEOUT 300)
