# SPDX-License-Identifier: MIT
# scripts/device-deps: each part's stamp follows what shapes it. The script is
# the same for every build, so the desktop's alone runs it.
if(TAMBER_QT EQUAL 5)
  add_test(NAME device-deps-stamps
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/devicedeps/stamps.sh ${PROJECT_SOURCE_DIR})
  set_tests_properties(device-deps-stamps PROPERTIES LABELS scripts TIMEOUT 120)
endif()
