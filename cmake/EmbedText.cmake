# embed_text(<target> <text file> <header> <function>): adds a source to <target> that defines the function of
# the header, std::string_view <function>(), with the file's bytes unchanged. The build renews it when
# the file changes.
function(embed_text target text header function)
  cmake_path(ABSOLUTE_PATH text)
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp")
  add_custom_command(
    OUTPUT "${source}"
    COMMAND "${CMAKE_COMMAND}" "-DTEXT=${text}" "-DHEADER=${header}" "-DFUNCTION=${function}"
            "-DSOURCE=${source}" -P "${CMAKE_CURRENT_FUNCTION_LIST_FILE}"
    DEPENDS "${text}" "${CMAKE_CURRENT_FUNCTION_LIST_FILE}"
    COMMENT "Embedding ${function}"
    VERBATIM)
  target_sources(${target} PRIVATE "${source}")
endfunction()

if(NOT CMAKE_SCRIPT_MODE_FILE)
  return()
endif()

file(READ "${TEXT}" content)
string(FIND "${content}" ")text\"" delimiter)
if(NOT delimiter EQUAL -1)
  message(FATAL_ERROR "${TEXT} holds the delimiter of the raw string that is to hold it")
endif()
file(WRITE "${SOURCE}" "#include \"${HEADER}\"

std::string_view ${FUNCTION}() {
    return R\"text(${content})text\";
}
")
