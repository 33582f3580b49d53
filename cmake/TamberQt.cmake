# SPDX-License-Identifier: MIT
# Which Qt the build uses, behind one set of target names.
#
# The desktop builds against Qt 5.15. The device build (scripts/device-build)
# configures with the SDK's qmake as QT_QMAKE_EXECUTABLE, which selects the
# device's Qt 4.8. Either way the targets below name the same modules, so the
# rest of the build is written once:
#
#   TamberQt::Core  TamberQt::Gui  TamberQt::Widgets  TamberQt::Sql  TamberQt::Test
#
# TAMBER_QT is 4 or 5. Under Qt 4 the widgets live in QtGui, so
# TamberQt::Widgets is QtGui.

if(NOT DEFINED TAMBER_QT)
  if(QT_QMAKE_EXECUTABLE)
    set(TAMBER_QT 4)
  else()
    set(TAMBER_QT 5)
  endif()
endif()
set(TAMBER_QT ${TAMBER_QT} CACHE STRING "Qt major version to build against (4: the device's, 5: the desktop's)")

function(tamber_qt_alias name)
  add_library(TamberQt::${name} INTERFACE IMPORTED GLOBAL)
  set_target_properties(TamberQt::${name} PROPERTIES INTERFACE_LINK_LIBRARIES "${ARGN}")
endfunction()

if(TAMBER_QT EQUAL 4)
  find_package(Qt4 4.8 REQUIRED QtCore QtGui QtSql QtTest)
  tamber_qt_alias(Core Qt4::QtCore)
  tamber_qt_alias(Gui Qt4::QtGui)
  tamber_qt_alias(Widgets Qt4::QtGui)
  tamber_qt_alias(Sql Qt4::QtSql)
  tamber_qt_alias(Test Qt4::QtTest)
  # Where the SDK keeps its plug-ins and fonts, for the tests' environment.
  get_filename_component(TAMBER_QT4_PREFIX "${QT_LIBRARY_DIR}/.." ABSOLUTE)
  # Programs run from the build folder find the SDK's libraries, and those the
  # SDK's own libraries and plug-ins need (QtNetwork, SQLite), through their
  # run path; only the old kind of run path reaches those second-hand ones.
  set(CMAKE_EXE_LINKER_FLAGS "${CMAKE_EXE_LINKER_FLAGS} -Wl,--disable-new-dtags")
elseif(TAMBER_QT EQUAL 5)
  find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Sql Test)
  tamber_qt_alias(Core Qt5::Core)
  tamber_qt_alias(Gui Qt5::Gui)
  tamber_qt_alias(Widgets Qt5::Widgets)
  tamber_qt_alias(Sql Qt5::Sql)
  tamber_qt_alias(Test Qt5::Test)
else()
  message(FATAL_ERROR "TAMBER_QT must be 4 or 5, not ${TAMBER_QT}")
endif()
