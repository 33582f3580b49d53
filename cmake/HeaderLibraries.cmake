# SPDX-License-Identifier: MIT
# Debian's header-only libraries that both Qts use: nlohmann-json for the
# trace's JSON, CLI11 for tamber's command line. Their headers are the same
# for every architecture, but a cross build must not search the build
# machine's /usr/include, so each folder is linked into one of our own.
set(header_root ${CMAKE_BINARY_DIR}/header-libraries)
foreach(entry "tamber_json;nlohmann/json.hpp;nlohmann-json3-dev"
              "tamber_cli;CLI/CLI.hpp;libcli11-dev")
  list(GET entry 0 target)
  list(GET entry 1 header)
  list(GET entry 2 package)
  get_filename_component(folder ${header} DIRECTORY)
  find_path(${target}_INCLUDE ${header} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT ${target}_INCLUDE)
    message(FATAL_ERROR "${header} not found: install Debian's ${package} (scripts/setup)")
  endif()
  if(NOT EXISTS ${header_root}/${folder})
    file(MAKE_DIRECTORY ${header_root})
    file(CREATE_LINK ${${target}_INCLUDE}/${folder} ${header_root}/${folder} SYMBOLIC)
  endif()
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE ${header_root})
endforeach()
