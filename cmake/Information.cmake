# The information dictionary (Info.plist) that is installed with the program and stands beside it in
# the build tree: version, and how this build finds its updates.

set(KELO_VERSION "" CACHE STRING "Version that people are shown, for instance 1.4.2; empty: the project's")
set(KELO_BUILD_NUMBER "1" CACHE STRING "Number of the build; grows with every release, for updates go by it")
set(KELO_UPDATE_FEED "" CACHE STRING "Address of the update feed (https://...); empty: this build has no updates")
set(KELO_UPDATE_PUBLIC_KEY "" CACHE STRING "Key that updates are signed for, as kelo-appcast keygen prints it")
set(KELO_UPDATE_SIGNED_FEED "ON" CACHE BOOL "Whether the feed itself has to be signed, as kelo-appcast generate does")
set(KELO_UPDATE_CHANNELS "" CACHE STRING "Channels of the feed to take releases from besides the default one, with blanks between")
set(KELO_UPDATE_AUTOMATIC_CHECKS "ask" CACHE STRING "Whether to look for updates unasked: ask (the user), on or off")
set(KELO_UPDATE_CHECK_INTERVAL "86400" CACHE STRING "Seconds between automatic checks, at least 3600")
set(KELO_UPDATE_ALLOWS_AUTOMATIC "ON" CACHE BOOL "Whether the user may have updates installed unasked")
set(KELO_UPDATE_AUTOMATICALLY "OFF" CACHE BOOL "Install updates unasked from the start")
set_property(CACHE KELO_UPDATE_AUTOMATIC_CHECKS PROPERTY STRINGS ask on off)

# A program runs on the system it was built on and on newer ones. The C library stands for the system: no
# release of a distribution goes without a new one, and it is what a program can ask for on each of them.
execute_process(COMMAND getconf GNU_LIBC_VERSION OUTPUT_VARIABLE kelo_c_library OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
string(REGEX MATCH "[0-9]+\\.[0-9]+" kelo_c_library "${kelo_c_library}")
set(KELO_MINIMUM_SYSTEM "${kelo_c_library}" CACHE STRING "Oldest C library that the program runs with, for instance 2.36; updates are offered to no older system")

if(NOT KELO_VERSION)
  set(KELO_VERSION "${PROJECT_VERSION}")
endif()
include(${CMAKE_CURRENT_LIST_DIR}/CheckInformation.cmake)

set(kelo_information_file ${PROJECT_BINARY_DIR}/share/kelo/Info.plist)
configure_file(${PROJECT_SOURCE_DIR}/data/Info.plist.in ${kelo_information_file} @ONLY)
install(FILES ${kelo_information_file} DESTINATION ${CMAKE_INSTALL_DATADIR}/kelo)
