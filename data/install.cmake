# What the desktop reads of an installed Kelo.
install(FILES ${PROJECT_SOURCE_DIR}/data/app.kelo.Kelo.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/data/app.kelo.Kelo.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons
  FILES_MATCHING PATTERN "*.svg")
