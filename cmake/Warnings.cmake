# gallery_warnings: what every target of ours compiles with. Log lines and exceptions carry file names
# relative to the source tree, so that a build does not reveal the machine that made it.
add_library(gallery_warnings INTERFACE)
target_compile_options(gallery_warnings INTERFACE
  -Wall -Wextra -Werror
  -Wshadow -Wnon-virtual-dtor -Wcast-align -Wformat=2
  "-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=")
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(gallery_warnings INTERFACE -Wthread-safety)
endif()
