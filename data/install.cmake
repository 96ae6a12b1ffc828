# What the desktop reads of an installed Kelo.

# A desktop starts the program by its name on the session bus, where the entry says so. The bus finds the
# program through a file that names its place, and a tree that is unpacked anywhere has none: the entry in
# it is for whoever copies it, and starts the program by its name on the search path. Where both
# components are installed, the second entry replaces the first.
set(kelo_entry ${PROJECT_SOURCE_DIR}/data/app.kelo.Kelo.desktop)
set(kelo_entry_of_tree ${PROJECT_BINARY_DIR}/texts/tree/app.kelo.Kelo.desktop)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kelo_entry})
file(READ ${kelo_entry} kelo_entry_text)
string(REPLACE "DBusActivatable=true\n" "" kelo_entry_text "${kelo_entry_text}")
file(CONFIGURE OUTPUT ${kelo_entry_of_tree} CONTENT "${kelo_entry_text}" @ONLY)
install(FILES ${kelo_entry_of_tree} DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT tree)
install(FILES ${kelo_entry} DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT system)

# Written when it is installed, because only then the place is known.
install(CODE "
  set(kelo_installed_program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/kelo\")
  configure_file(\"${PROJECT_SOURCE_DIR}/data/app.kelo.Kelo.service.in\"
    \"${PROJECT_BINARY_DIR}/texts/app.kelo.Kelo.service\" @ONLY)
  file(INSTALL \"${PROJECT_BINARY_DIR}/texts/app.kelo.Kelo.service\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/dbus-1/services\")
" COMPONENT system)

# Programs that list software lead to the publisher's page.
set(KELO_HOMEPAGE "" CACHE STRING "The publisher's page about this program (https://...), for lists of software")
set(KELO_SCREENSHOT "" CACHE STRING "Address of a picture of the program (https://...), for lists of software")
set(kelo_metainfo_installed ${PROJECT_BINARY_DIR}/texts/app.kelo.Kelo.metainfo.xml)
include(${PROJECT_SOURCE_DIR}/cmake/WriteMetainfo.cmake)
install(FILES ${kelo_metainfo_installed} DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons
  FILES_MATCHING PATTERN "*.svg")
