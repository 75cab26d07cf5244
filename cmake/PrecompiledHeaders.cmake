# Most of clang's time for a unit goes into headers that all include; compiled once for the libraries and once
# for the tests they take a third of it. Units still include what they need, which the builds by g++ see to: that
# one gains nothing by this.

# Both kinds of programs differ by how position independent they are.
function(precompile_headers)
  add_library(pch_libraries STATIC "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Precompiled.cpp")
  target_link_libraries(pch_libraries PRIVATE kxp_common)
  target_precompile_headers(pch_libraries PRIVATE
    <algorithm> <atomic> <chrono> <filesystem> <functional> <map> <memory> <optional> <set> <string> <thread>
    <vector> "${CMAKE_SOURCE_DIR}/src/common/Json.h")
  if(GALLERY_TESTS)
    find_package(GTest REQUIRED)
    add_executable(pch_tests "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Precompiled.cpp")
    target_link_libraries(pch_tests PRIVATE kxp_common GTest::gtest GTest::gtest_main)
    target_precompile_headers(pch_tests PRIVATE
      <algorithm> <atomic> <chrono> <filesystem> <fstream> <functional> <map> <memory> <optional> <set> <string>
      <thread> <vector> <gtest/gtest.h> "${CMAKE_SOURCE_DIR}/src/common/Json.h")
  endif()
  reuse_headers_below("${CMAKE_SOURCE_DIR}")
endfunction()

function(reuse_headers_below folder)
  get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    reuse_headers(${target})
  endforeach()
  get_property(folders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    reuse_headers_below("${below}")
  endforeach()
endfunction()

function(reuse_headers target)
  get_target_property(type ${target} TYPE)
  get_target_property(visibility ${target} CXX_VISIBILITY_PRESET)
  get_target_property(libraries ${target} LINK_LIBRARIES)
  # OpenEXR brings along -pthread, with which clang takes other headers only.
  if(target MATCHES "^pch_" OR visibility OR "PkgConfig::openexr" IN_LIST libraries)
    return()
  elseif(type MATCHES "STATIC_LIBRARY|OBJECT_LIBRARY|SHARED_LIBRARY")
    target_precompile_headers(${target} REUSE_FROM pch_libraries)
  elseif(type STREQUAL EXECUTABLE AND "GTest::gtest" IN_LIST libraries)
    target_precompile_headers(${target} REUSE_FROM pch_tests)
  endif()
endfunction()
