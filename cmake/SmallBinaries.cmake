# The release product is to be small: a start reads its libraries from the disk. What nothing refers to is left out,
# and what runs once for a request is compiled for its size.
set(GALLERY_SMALL OFF)
if(CMAKE_BUILD_TYPE STREQUAL RelWithDebInfo AND NOT GALLERY_SANITIZE)
  set(GALLERY_SMALL ON)
endif()

if(GALLERY_SMALL)
  add_compile_options(-ffunction-sections -fdata-sections)
  if(APPLE)
    add_link_options(LINKER:-dead_strip)
  else()
    # Pointers that move with the library take a bit each instead of 24 bytes.
    add_link_options(LINKER:--gc-sections LINKER:-z,pack-relative-relocs)
  endif()
endif()

# prefer_size(<target> [<source>...]): compiles the target for its size, or only these sources of it.
function(prefer_size target)
  if(NOT GALLERY_SMALL)
    return()
  endif()
  if(ARGN)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -Os)
  else()
    target_compile_options(${target} PRIVATE -Os)
  endif()
endfunction()
