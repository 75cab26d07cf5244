# `cmake --install` and `cpack` lay the product out in the same way: the product root below lib, the host on the path,
# and what desktops and shells look for in share. Debug information is a component, and a package, of its own.
include(GNUInstallDirs)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(package ovirastreamx-gallery)
set(root "${CMAKE_INSTALL_LIBDIR}/ovirastreamx")
# Where Debian has the libraries of one architecture is for libraries that others link.
if(CMAKE_INSTALL_LIBDIR MATCHES "/")
  set(root "lib/ovirastreamx")
endif()
set(sources "${CMAKE_SOURCE_DIR}/packaging")
set(texts "${CMAKE_BINARY_DIR}/package-texts")

add_custom_command(
  OUTPUT "${texts}/gallery-host.1.gz"
  COMMAND "${Python3_EXECUTABLE}" "${sources}/make-texts" "$<TARGET_FILE:gallery-host>" "${PROJECT_VERSION}"
    "${CMAKE_SOURCE_DIR}/CHANGELOG.md" "${texts}"
  DEPENDS gallery-host "${sources}/make-texts" "${CMAKE_SOURCE_DIR}/CHANGELOG.md"
  COMMENT "Making the manual page and the completions"
  VERBATIM)
add_custom_target(package_texts ALL DEPENDS "${texts}/gallery-host.1.gz")

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME product)
install(DIRECTORY "${PRODUCT_ROOT}/Contents/MacOS" DESTINATION "${root}/Contents" USE_SOURCE_PERMISSIONS
  PATTERN "*.debug" EXCLUDE)
# Libraries are not executable.
install(DIRECTORY "${PRODUCT_ROOT}/Contents/Frameworks" "${PRODUCT_ROOT}/Contents/Resources"
  DESTINATION "${root}/Contents" PATTERN "*.debug" EXCLUDE)
install(CODE "
  file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
  file(CREATE_LINK ../${root}/Contents/MacOS/gallery-host
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/gallery-host\" SYMBOLIC)")
install(FILES "${texts}/gallery-host.1.gz" DESTINATION share/man/man1)
install(FILES "${texts}/gallery-host.bash" DESTINATION share/bash-completion/completions RENAME gallery-host)
install(FILES "${texts}/gallery-host.zsh" DESTINATION share/zsh/vendor-completions RENAME _gallery-host)
install(FILES "${texts}/gallery-host.fish" DESTINATION share/fish/vendor_completions.d)
install(FILES "${sources}/${package}.desktop" DESTINATION share/applications)
install(FILES "${sources}/${package}.svg" DESTINATION share/icons/hicolor/scalable/apps)
install(FILES "${sources}/${package}.metainfo.xml" DESTINATION share/metainfo)
install(FILES "${sources}/gallery-import@.service" DESTINATION lib/systemd/user)
install(FILES "${sources}/copyright" "${texts}/changelog.gz" DESTINATION "share/doc/${package}")

# Debuggers look for it under the whole path of the file that it belongs to.
install(DIRECTORY "${PRODUCT_ROOT}/Contents/Frameworks" "${PRODUCT_ROOT}/Contents/MacOS"
  DESTINATION "lib/debug/usr/${root}/Contents" COMPONENT debug FILES_MATCHING PATTERN "*.debug")
install(FILES "${sources}/copyright" "${texts}/changelog.gz" DESTINATION "share/doc/${package}-dbgsym"
  COMPONENT debug)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${package}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The gallery's developers <gallery@ovirastreamx.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL product debug)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PRODUCT_PACKAGE_NAME "${package}")
set(CPACK_DEBIAN_PRODUCT_PACKAGE_SECTION video)
set(CPACK_COMPONENT_PRODUCT_DESCRIPTION "gallery of the screenshots and videos of games
Finds the captures of games, keeps a record of them, shows them in a browser,
cuts clips out of videos without loss and imports what other recorders made.")
set(CPACK_DEBIAN_PRODUCT_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PRODUCT_DEPENDENCIES_DIR}")
# Programs that it starts, and what a montage or a download needs at that moment.
set(CPACK_DEBIAN_PRODUCT_PACKAGE_DEPENDS "ca-certificates")
set(CPACK_DEBIAN_PRODUCT_PACKAGE_RECOMMENDS "xdg-utils, chromium | www-browser")
set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME "${package}-dbgsym")
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "${package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEBUG_DESCRIPTION "debug symbols for ${package}
Debuggers find them by themselves.")
include(CPack)
