# What makes a fault in a library that reads foreign bytes harder to abuse: checked stacks and copies, tables that
# nobody can write once the library is loaded, and jumps to nowhere but the beginning of a function. scripts/check
# looks for them in what was built.
add_compile_definitions(_GLIBCXX_ASSERTIONS)
if(NOT GALLERY_SANITIZE)
  add_compile_options(-fstack-protector-strong)
  # Needs optimization.
  add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND NOT APPLE)
  add_compile_options(-fcf-protection)
endif()
if(NOT APPLE)
  add_compile_options(-fstack-clash-protection)
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endif()
