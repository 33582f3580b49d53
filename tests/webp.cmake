# WebP pages through the image plug-in in bin/imageformats. The suite makes
# its files with libwebp's encoder and animation encoder.
pkg_check_modules(WEBP_ENCODER REQUIRED IMPORTED_TARGET libwebp libwebpmux)
tamber_add_test(tst_webp tst_webp.cpp LABELS archive)
target_link_libraries(tst_webp PRIVATE PkgConfig::WEBP_ENCODER)

# Every suite runs from bin and reads pages through Qt's image plug-ins, so
# each needs them built, whichever fragment added it.
function(tamber_tests_need_image_plugins)
  get_property(plugins GLOBAL PROPERTY TAMBER_IMAGE_PLUGINS)
  get_directory_property(targets BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE" AND plugins)
      add_dependencies(${target} ${plugins})
    endif()
  endforeach()
endfunction()
cmake_language(DEFER CALL tamber_tests_need_image_plugins)
