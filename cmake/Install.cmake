# SPDX-License-Identifier: MIT
# Installation, the manual page and the packages.
#
# The layout keeps what the device's host expects: the unrar extractor in the
# host program's folder, where the plug-in runs it as "<application
# folder>/unrar", and the plug-in in a plug-in folder, here "plugins" beside
# the program, where tamber looks after its own folder.
#
#   bin/tamber                             link to ../lib/tamber/tamber
#   lib/tamber/tamber                      the host program
#   lib/tamber/unrar                       the RAR extractor
#   lib/tamber/plugins/libcomicsreader.so  the plug-in
#   lib/tamber/imageformats/libq*.so       Qt image plug-ins for page formats
#                                          Qt lacks (WebP, AVIF, JPEG XL), where
#                                          Qt looks beside the program
#   lib/libtamber.so.0                     the host library
#   share/man/man1/tamber.1                the manual page
#   share/doc/tamber/copyright             the licence, in Debian's format
#   share/doc/tamber-comics/LICENSE        the licence, in the device part
#
# The programs live in lib/tamber rather than in bin because the extractor must
# lie beside the program, and a program called unrar in bin would shadow the
# system's own (Debian's unrar packages provide /usr/bin/unrar). Qt follows the
# bin/tamber link, so the program's folder is lib/tamber.
#
# Components: "device" is what goes onto the e-reader, the plug-in and its
# extractor; "desktop" is all of it. The rules live here rather than beside
# each target because they are one decision: the relative places of program,
# extractor, plug-in and library, and the run paths that follow from them.

set(TAMBER_APP_DIR lib/tamber)

# Run paths from each installed file to lib/, where libtamber lies.
set_target_properties(tamber-app PROPERTIES INSTALL_RPATH "$ORIGIN/..")
set_target_properties(comicsreader PROPERTIES INSTALL_RPATH "$ORIGIN/../..")

install(TARGETS tamber-app RUNTIME DESTINATION ${TAMBER_APP_DIR} COMPONENT desktop)
# No development files are installed, so the library's unversioned link is not either.
install(TARGETS tamber LIBRARY DESTINATION lib COMPONENT desktop NAMELINK_SKIP)
foreach(component device desktop)
  install(TARGETS unrar RUNTIME DESTINATION ${TAMBER_APP_DIR} COMPONENT ${component})
  install(TARGETS comicsreader LIBRARY DESTINATION ${TAMBER_APP_DIR}/plugins
    COMPONENT ${component})
endforeach()
# The image plug-ins go into the host program's imageformats folder, on the
# device as on the desktop.
get_property(tamber_image_plugins GLOBAL PROPERTY TAMBER_IMAGE_PLUGINS)
foreach(component device desktop)
  install(TARGETS ${tamber_image_plugins} LIBRARY DESTINATION ${TAMBER_APP_DIR}/imageformats
    COMPONENT ${component})
endforeach()

# The desktop's libraries are the system's, linked dynamically: only the
# project's own licence travels, for the Debian package in Debian's
# machine-readable format (where MIT's text is named Expat).
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(REGEX REPLACE "^MIT License\n\n" "" licence "${licence}")
string(STRIP "${licence}" licence)
string(REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REPLACE "\n" "\n " licence "${licence}")
file(WRITE ${CMAKE_BINARY_DIR}/copyright
  "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
  "Upstream-Name: tamber\n\n"
  "Files: *\nCopyright: 2026 The Tamber comics developers\nLicense: Expat\n ${licence}\n")
install(FILES ${CMAKE_BINARY_DIR}/copyright DESTINATION share/doc/tamber COMPONENT desktop)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION share/doc/tamber-comics COMPONENT device)

file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/install)
file(CREATE_LINK ../${TAMBER_APP_DIR}/tamber ${CMAKE_BINARY_DIR}/install/tamber SYMBOLIC)
install(FILES ${CMAKE_BINARY_DIR}/install/tamber DESTINATION bin COMPONENT desktop)

# The manual page is the program's own help, rendered by tamber --man.
set(TAMBER_MAN_PAGE ${CMAKE_BINARY_DIR}/install/tamber.1)
add_custom_command(OUTPUT ${TAMBER_MAN_PAGE}
  COMMAND ${CMAKE_COMMAND} -DTAMBER=$<TARGET_FILE:tamber-app> -DOUTPUT=${TAMBER_MAN_PAGE}
    -P ${CMAKE_CURRENT_LIST_DIR}/ManPage.cmake
  DEPENDS tamber-app ${CMAKE_CURRENT_LIST_DIR}/ManPage.cmake
  COMMENT "Writing the manual page tamber.1"
  VERBATIM)
add_custom_target(tamber-man ALL DEPENDS ${TAMBER_MAN_PAGE})
install(FILES ${TAMBER_MAN_PAGE} DESTINATION share/man/man1 COMPONENT desktop)

# An installed copy works on its own: scripts/install-check installs into a
# temporary prefix and imports and renders with the installed tamber.
if(TAMBER_BUILD_TESTS)
  add_test(NAME install-check
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/install-check ${CMAKE_BINARY_DIR})
  set_tests_properties(install-check PROPERTIES LABELS install TIMEOUT 300)
endif()

# Packages (scripts/package): a tarball of the device component and a Debian
# package of the desktop component. PackageComponents.cmake picks each
# generator's component when cpack runs.
set(CPACK_PACKAGE_NAME tamber-comics)
set(CPACK_PACKAGE_VENDOR "Tamber comics")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Comic-book reading plug-in for the Tamber e-reader, with a desktop host")
set(CPACK_PACKAGE_CONTACT "Tamber comics developers <comics@tamber.invalid>")
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/PackageComponents.cmake)

set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_DEVICE_FILE_NAME
  tamber-comics-device-${PROJECT_VERSION}-Linux-${CMAKE_SYSTEM_PROCESSOR})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME tamber)
set(CPACK_DEBIAN_DESKTOP_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt loads these as plug-ins, which dpkg-shlibdeps cannot see: the library's
# SQLite driver, and the decoder of SVG pages.
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS libqt5sql5-sqlite)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS libqt5svg5)
set(CPACK_DEBIAN_DESKTOP_DESCRIPTION
  "tamber loads the comics reader plug-in the way the e-reader's reading
application does: it imports ZIP and RAR comics and pictures into a library,
renders their pages, opens them in a reading window and plays scripted
sessions with a trace of the plug-in's calls. The package holds tamber, the
host library libtamber, the plug-in and its unrar extractor.")

include(CPack)
