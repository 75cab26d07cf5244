# Counters of lines and branches for scripts/coverage. While a process runs they lie in a file below the build folder,
# which all processes of the same program share, so that one counts as well that is killed, leaves with _exit or
# clears its environment. For that the counters have to be relocatable.
if(GALLERY_COVERAGE)
  set(profile "-fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%c%m.profraw")
  add_compile_options("${profile}" -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
  add_link_options("${profile}")
endif()
