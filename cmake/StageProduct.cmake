# The product root: build/<preset>/OvirastreamX.app runs in place and wherever it is copied, because
# targets are built straight into it and libraries find each other by a run path relative to themselves.
set(PRODUCT_ROOT "${CMAKE_BINARY_DIR}/OvirastreamX.app")
set(PRODUCT_HOST_DIR "${PRODUCT_ROOT}/Contents/MacOS")
set(PRODUCT_PLUGIN_DIR "${PRODUCT_ROOT}/Contents/Frameworks/plugins/Gallery")
set(PRODUCT_DEPENDENCIES_DIR "${PRODUCT_ROOT}/Contents/Frameworks/dependencies")
set(PRODUCT_DATA_DIR "${PRODUCT_ROOT}/Contents/Resources/data")
set(PRODUCT_PAGE_DIR "${PRODUCT_ROOT}/Contents/Resources/page")

# stage_target(<target> <folder> [<run path>]): the target is built into <folder> of the product root.
function(stage_target target folder)
  set(run_path "${ARGN}")
  if(APPLE)
    string(REPLACE "$ORIGIN" "@loader_path" run_path "${run_path}")
  endif()
  set_target_properties(${target} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${folder}"
    LIBRARY_OUTPUT_DIRECTORY "${folder}"
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "${run_path}")
  if(GALLERY_SMALL AND NOT APPLE)
    move_debug_information(${target})
  endif()
endfunction()

# move_debug_information(<target>): into a file beside it, which it names so that debuggers find it.
function(move_debug_information target)
  set(binary "$<TARGET_FILE:${target}>")
  get_target_property(type ${target} TYPE)
  set(name ${target})
  if(type STREQUAL SHARED_LIBRARY)
    set(name "lib${target}.so")
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND "${CMAKE_OBJCOPY}" --only-keep-debug "${binary}" "${binary}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --strip-unneeded "--add-gnu-debuglink=${binary}.debug" "${binary}"
    BYPRODUCTS "${folder}/${name}.debug"
    VERBATIM)
endfunction()

# What macOS asks of a bundle.
if(APPLE)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/apple/Info.plist.in" "${PRODUCT_ROOT}/Contents/Info.plist" @ONLY)
endif()

# stage_data(<target>): <target> copies the product's data files into the root.
function(stage_data target)
  file(GLOB_RECURSE data_files CONFIGURE_DEPENDS RELATIVE "${CMAKE_SOURCE_DIR}/data" "${CMAKE_SOURCE_DIR}/data/*")
  set(staged)
  foreach(name IN LISTS data_files)
    add_custom_command(
      OUTPUT "${PRODUCT_DATA_DIR}/${name}"
      COMMAND "${CMAKE_COMMAND}" -E copy "${CMAKE_SOURCE_DIR}/data/${name}" "${PRODUCT_DATA_DIR}/${name}"
      DEPENDS "${CMAKE_SOURCE_DIR}/data/${name}"
      COMMENT "Staging ${name}")
    list(APPEND staged "${PRODUCT_DATA_DIR}/${name}")
  endforeach()
  add_custom_target(${target} ALL DEPENDS ${staged})
endfunction()
