# cmake -DNM=... -DLIBRARY=... -DEXPECTED=... -P CheckExports.cmake: the library defines the expected dynamic
# symbol and no other.
execute_process(COMMAND "${NM}" --dynamic --defined-only --format=posix "${LIBRARY}"
  OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " [^\n]*" "" names "${listed}")
string(STRIP "${names}" names)
if(NOT names STREQUAL EXPECTED)
  message(FATAL_ERROR "${LIBRARY} exports:\n${names}\nexpected: ${EXPECTED}")
endif()
