# SPDX-License-Identifier: MIT
# The device's package, from a build against the device's Qt: the plug-in and
# its extractor in the layout of the host application's prefix, where the
# plug-in runs its extractor as "<application folder>/unrar":
#
#   lib/tamber/unrar                       the RAR extractor
#   lib/tamber/plugins/libcomicsreader.so  the plug-in
#   lib/tamber/imageformats/libq*.so       Qt image plug-ins for page formats
#                                          the device's Qt lacks (WebP, AVIF,
#                                          JPEG XL),
#                                          where its Qt looks: the
#                                          application's folder
#   share/doc/tamber-comics/LICENSE        the project's licence
#   share/doc/tamber-comics/THIRD-PARTY-NOTICES
#                                          the notices of the libraries that
#                                          the ARM binaries link statically
#
# scripts/package writes it as tamber-comics-device-VERSION-ARCH.tar.gz.

set(TAMBER_APP_DIR lib/tamber)
if(CMAKE_CROSSCOMPILING)
  set(TAMBER_DEVICE_ARCH armhf)
else()
  set(TAMBER_DEVICE_ARCH ${CMAKE_SYSTEM_PROCESSOR})
endif()

# On the device the host has loaded libtamber and Qt before the plug-in, so the
# plug-in carries no run path, in the build as in the package.
set_target_properties(comicsreader PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "")
if(CMAKE_CROSSCOMPILING)
  # The host stand-in keeps the C++ runtime that it links statically to
  # itself, so that the plug-in is linked with its own copy and never takes
  # one from a libtamber that happens to export it.
  target_link_options(tamber PRIVATE -Wl,--exclude-libs,ALL)
endif()
install(TARGETS comicsreader LIBRARY DESTINATION ${TAMBER_APP_DIR}/plugins COMPONENT device)
get_property(tamber_image_plugins GLOBAL PROPERTY TAMBER_IMAGE_PLUGINS)
if(tamber_image_plugins)
  set_target_properties(${tamber_image_plugins} PROPERTIES BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "")
  install(TARGETS ${tamber_image_plugins} LIBRARY DESTINATION ${TAMBER_APP_DIR}/imageformats
    COMPONENT device)
endif()
# The cross build's extractor is a program built elsewhere and copied in.
install(PROGRAMS ${CMAKE_BINARY_DIR}/bin/unrar DESTINATION ${TAMBER_APP_DIR} COMPONENT device)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION share/doc/tamber-comics COMPONENT device)
if(CMAKE_CROSSCOMPILING)
  # Made from the copyright files of the packages the libraries were built from.
  set(notices ${CMAKE_BINARY_DIR}/THIRD-PARTY-NOTICES)
  add_custom_command(OUTPUT ${notices}
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/third-party-notices ${TAMBER_DEVICE_PREFIX} ${notices}
    DEPENDS ${PROJECT_SOURCE_DIR}/scripts/third-party-notices
    COMMENT "Writing the third-party notices")
  add_custom_target(third-party-notices ALL DEPENDS ${notices})
  install(FILES ${notices} DESTINATION share/doc/tamber-comics COMPONENT device)
endif()

set(CPACK_PACKAGE_NAME tamber-comics-device)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR TGZ)
set(CPACK_STRIP_FILES ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL device)
set(CPACK_PACKAGING_INSTALL_PREFIX "")
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_ARCHIVE_DEVICE_FILE_NAME tamber-comics-device-${PROJECT_VERSION}-${TAMBER_DEVICE_ARCH})
include(CPack)
