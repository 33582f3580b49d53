# SPDX-License-Identifier: MIT
# Loaded by the device's Qt: its own plug-in loader, as the host loads the plug-in.
tamber_add_test(tst_qtloader tst_qtloader.cpp LABELS plugin)
add_dependencies(tst_qtloader comicsreader)

# The ARM package: its binaries within the devices' C library, and installed
# into a scratch root, where a miniature host loads it under qemu-arm.
if(CMAKE_CROSSCOMPILING)
  add_executable(devicehost devicepackage/devicehost.cpp)
  target_link_libraries(devicehost PRIVATE tamber TamberQt::Gui)
  add_dependencies(devicehost comicsreader unrar)
  add_test(NAME device-package
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/devicepackage/check.sh ${CMAKE_BINARY_DIR}
      $<TARGET_FILE:devicehost> ${TAMBER_SAMPLES_DIR} ${TAMBER_DEVICE_PREFIX})
  tamber_test_environment(device-package)
  # 77: the RAR sample is not beside the checkout, so that case was skipped.
  set_tests_properties(device-package PROPERTIES LABELS package TIMEOUT 300 SKIP_RETURN_CODE 77)
endif()
