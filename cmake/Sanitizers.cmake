# GALLERY_SANITIZE instruments everything alike: a sanitized library needs a sanitized host.
if(GALLERY_SANITIZE)
  add_compile_options("-fsanitize=${GALLERY_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options("-fsanitize=${GALLERY_SANITIZE}")
  add_compile_definitions(GALLERY_SANITIZED)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    add_compile_options("-fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitizer-ignore.txt")
  endif()
endif()
# libFuzzer needs the branches of everything that it links.
if(GALLERY_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
