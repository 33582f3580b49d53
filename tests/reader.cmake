# The reading view: construction and opening, navigation and saving, painting,
# input. Each suite compiles the view's shared fixture.
foreach(suite tst_readeropen tst_readernavigation tst_readerpaint tst_readerinput)
  tamber_add_test(${suite} ${suite}.cpp readersupport/ReaderFixture.cpp
    readersupport/ReaderFixture.h LABELS reader)
  target_include_directories(${suite} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/readersupport)
endforeach()
