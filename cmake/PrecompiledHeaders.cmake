# clang spends most of its time on headers that every unit includes. They are compiled once for the libraries and
# once for the tests, which saves two thirds of the build. g++ gains nothing from this, so its builds do without and
# check that each unit includes what it needs.

# Libraries and programs differ in their position-independent code, so each kind has its own.
function(precompile_headers)
  add_library(pch_libraries STATIC "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Precompiled.cpp")
  target_link_libraries(pch_libraries PRIVATE kxp_common)
  target_precompile_headers(pch_libraries PRIVATE
    <algorithm> <atomic> <chrono> <filesystem> <functional> <map> <memory> <optional> <set> <string> <thread>
    <vector> "${CMAKE_SOURCE_DIR}/src/common/json/Json.h")
  if(GALLERY_TESTS)
    find_package(GTest REQUIRED)
    add_executable(pch_tests "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Precompiled.cpp")
    target_link_libraries(pch_tests PRIVATE kxp_common GTest::gtest GTest::gtest_main)
    target_precompile_headers(pch_tests PRIVATE
      <algorithm> <atomic> <chrono> <filesystem> <fstream> <functional> <map> <memory> <optional> <set> <string>
      <thread> <vector> <gtest/gtest.h> "${CMAKE_SOURCE_DIR}/src/common/json/Json.h")
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
  # OpenEXR adds -pthread, and clang refuses precompiled headers that were compiled without it.
  if(target MATCHES "^pch_" OR visibility OR "PkgConfig::openexr" IN_LIST libraries)
    return()
  elseif(type MATCHES "STATIC_LIBRARY|OBJECT_LIBRARY|SHARED_LIBRARY")
    target_precompile_headers(${target} REUSE_FROM pch_libraries)
  elseif(type STREQUAL EXECUTABLE AND "GTest::gtest" IN_LIST libraries)
    target_precompile_headers(${target} REUSE_FROM pch_tests)
  endif()
endfunction()
