# SPDX-License-Identifier: MIT
# Read by cpack for each generator: the tarball holds the device component, to
# unpack into the host application's prefix; the Debian package holds the
# desktop one, under /usr.
if(CPACK_GENERATOR STREQUAL "TGZ")
  set(CPACK_COMPONENTS_ALL device)
  set(CPACK_PACKAGING_INSTALL_PREFIX "")
elseif(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_COMPONENTS_ALL desktop)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop host for the Tamber comics reader plug-in")
endif()
