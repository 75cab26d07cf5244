# The gallery page is TypeScript and is built with npm, once for all presets, into build/page; each product root gets a
# copy. Without npm everything else is built, and `gallery-host page` says that the page is missing.
set(PAGE_BUILD_DIR "${CMAKE_SOURCE_DIR}/build/page")

# Sets PAGE_BUILDABLE when npm and a Node.js that is new enough are there, else says what is missing.
function(find_page_tools)
  set(PAGE_BUILDABLE FALSE PARENT_SCOPE)
  find_program(NODE_EXECUTABLE NAMES node nodejs)
  find_program(NPM_EXECUTABLE npm)
  if(NOT NODE_EXECUTABLE OR NOT NPM_EXECUTABLE)
    message(STATUS "The gallery page is not built: npm is missing")
    return()
  endif()
  execute_process(COMMAND "${NODE_EXECUTABLE}" --version OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
  string(REPLACE "v" "" version "${version}")
  if(version VERSION_LESS 18)
    message(STATUS "The gallery page is not built: Node.js ${version} is too old, it needs 18")
    return()
  endif()
  set(PAGE_BUILDABLE TRUE PARENT_SCOPE)
endfunction()
find_page_tools()

# stage_page(<target>): <target> builds the page and copies it into the product root.
function(stage_page target)
  if(NOT PAGE_BUILDABLE)
    add_custom_target(${target})
    return()
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/web/src/*" "${CMAKE_SOURCE_DIR}/web/scripts/*")
  set(stamp "${CMAKE_BINARY_DIR}/page.stamp")
  # The terminal: the packages take a while to come, and npm says so.
  add_custom_command(
    OUTPUT "${stamp}"
    COMMAND "${CMAKE_COMMAND}" "-DNODE=${NODE_EXECUTABLE}" "-DNPM=${NPM_EXECUTABLE}" "-DSOURCE=${CMAKE_SOURCE_DIR}/web"
            "-DBUILD=${PAGE_BUILD_DIR}" "-DSTAGE=${PRODUCT_PAGE_DIR}" "-DSTAMP=${stamp}"
            -P "${CMAKE_SOURCE_DIR}/cmake/BuildPage.cmake"
    DEPENDS ${sources} "${CMAKE_SOURCE_DIR}/web/package-lock.json" "${CMAKE_SOURCE_DIR}/cmake/BuildPage.cmake"
    COMMENT "Building the gallery page"
    USES_TERMINAL
    VERBATIM)
  add_custom_target(${target} ALL DEPENDS "${stamp}")
endfunction()
