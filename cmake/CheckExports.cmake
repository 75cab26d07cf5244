# cmake -DNM=... -DLIBRARY=... -DEXPECTED=... -P CheckExports.cmake: the library defines the expected dynamic
# symbol and no other.
set(which --dynamic --defined-only)
if(LIBRARY MATCHES "\\.dylib$")
  set(which --extern-only --defined-only)
endif()
execute_process(COMMAND "${NM}" ${which} --format=posix "${LIBRARY}"
  OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " [^\n]*" "" names "${listed}")
string(STRIP "${names}" names)
# Each name of C begins with a "_" there.
if(LIBRARY MATCHES "\\.dylib$")
  string(REGEX REPLACE "(^|\n)_" "\\1" names "${names}")
endif()
if(NOT names STREQUAL EXPECTED)
  message(FATAL_ERROR "${LIBRARY} exports:\n${names}\nexpected: ${EXPECTED}")
endif()
