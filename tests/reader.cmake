# The reading view: construction and opening, navigation and saving, painting,
# input, dog ears. Each suite compiles the view's shared fixture.
foreach(suite tst_readeropen tst_readernavigation tst_readerpaint tst_readerinput
    tst_readerdogears)
  tamber_add_test(${suite} ${suite}.cpp readersupport/ReaderFixture.cpp
    readersupport/ReaderFixture.h LABELS reader)
  target_include_directories(${suite} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/readersupport)
endforeach()

# The host's gesture framework: recognizers, receiver, panning mixin.
tamber_add_test(tst_gestures tst_gestures.cpp readersupport/GestureScript.cpp
  readersupport/GestureScript.h LABELS host)
target_include_directories(tst_gestures PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/readersupport)

# Reading in a real window: "tamber read" on a virtual X server, driven with
# xdotool and pictured with xwd. Skipped without those tools or the samples.
add_executable(tst_readwindow tst_readwindow.cpp readersupport/ReadWindowDriver.cpp
  readersupport/ReadWindowDriver.h readersupport/XwdImage.cpp readersupport/XwdImage.h)
target_include_directories(tst_readwindow PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/readersupport)
target_link_libraries(tst_readwindow PRIVATE tamber_internal tamber_testsupport Qt5::Test)
add_dependencies(tst_readwindow tamber-app comicsreader unrar)
add_test(NAME tst_readwindow
  COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/readwindow/xvfb.sh ${TAMBER_SAMPLES_DIR}
    $<TARGET_FILE:tst_readwindow>)
set_tests_properties(tst_readwindow PROPERTIES LABELS window SKIP_RETURN_CODE 77 TIMEOUT 300)
