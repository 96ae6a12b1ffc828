# What the packages hold beside the program, and how cpack makes them: a .deb, and a tree that can be
# put anywhere (.tar.zst).

set(KELO_PACKAGE_CONTACT "The Kelo authors <authors@kelo.app>" CACHE STRING "Who answers for the packages: name and address")

find_program(GZIP gzip REQUIRED)
find_program(PATCHELF patchelf)

# Configures a page or a changelog and compresses it as Debian asks: as small as it goes, and without
# a date, so that the same text gives the same file.
function(kelo_compressed_text template output)
  configure_file(${template} ${output} @ONLY)
  execute_process(COMMAND ${GZIP} -9nc ${output} OUTPUT_FILE ${output}.gz COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# SOURCE_DATE_EPOCH, if set, is the date of a build that must come out the same again.
string(TIMESTAMP kelo_manual_date "%Y-%m-%d" UTC)
string(TIMESTAMP kelo_changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)

set(kelo_texts ${PROJECT_BINARY_DIR}/texts)
foreach(program kelo kelo-passkeys)
  kelo_compressed_text(${PROJECT_SOURCE_DIR}/data/man/${program}.1.in ${kelo_texts}/${program}.1)
  install(FILES ${kelo_texts}/${program}.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
if(KELO_BUILD_PUBLISHER)
  kelo_compressed_text(${PROJECT_SOURCE_DIR}/data/man/kelo-appcast.1.in ${kelo_texts}/kelo-appcast.1)
  install(FILES ${kelo_texts}/kelo-appcast.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kelo COMPONENT tree)

# Of the .deb alone: a component of its own, because other packages hold what "system" has.
kelo_compressed_text(${PROJECT_SOURCE_DIR}/data/debian/changelog.in ${kelo_texts}/changelog.Debian)
install(FILES ${kelo_texts}/changelog.Debian.gz ${PROJECT_SOURCE_DIR}/data/debian/copyright
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kelo COMPONENT debian)

set(CPACK_GENERATOR "DEB;TZST")
set(CPACK_PACKAGE_NAME kelo)
set(CPACK_PACKAGE_VENDOR "The Kelo authors")
set(CPACK_PACKAGE_CONTACT "${KELO_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_VERSION "${KELO_VERSION}")
set(CPACK_PACKAGE_FILE_NAME "${KELO_TREE_NAME}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "web assistant in a window of its own, with passkeys")
set(CPACK_PACKAGE_DESCRIPTION
"Kelo keeps one web-based assistant at hand: its web application in a window
of its own, its voice widget behind a pair of keys, and a sign-in with a
passkey that is made on this computer and never leaves it.")
set(CPACK_PACKAGE_HOMEPAGE_URL "${KELO_HOMEPAGE}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_THREADS 0)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/RepackSorted.cmake)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageKinds.cmake)
set(CPACK_KELO_TREE_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/BringLibraries.cmake ${PROJECT_SOURCE_DIR}/cmake/ListTreeFiles.cmake)
set(CPACK_KELO_PATCHELF ${PATCHELF})

set(CPACK_DEBIAN_PACKAGE_VERSION "${KELO_PACKAGE_VERSION}")
set(CPACK_DEBIAN_FILE_NAME "${KELO_PACKAGE_NAME}.deb")
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/data/debian/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What no link shows: started as programs, or loaded while running.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
"bubblewrap, xdg-dbus-proxy, glib-networking, ca-certificates, gstreamer1.0-pulseaudio, librsvg2-common, adwaita-icon-theme, libpam-runtime, default-dbus-session-bus | dbus-session-bus")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gnome-keyring | kwalletmanager, at-spi2-core, xdg-utils, fonts-dejavu-core | fonts-liberation")
include(CPack)
