# The version and the name of the .deb, and the name of the tree.

# A .deb needs the libraries of the system that it was built on. Its version and its file's name say which
# one, so that both can lie in one folder, and so that a newer system's takes the place of an older one's.
function(kelo_find_package_system result)
  cmake_host_system_information(RESULT system QUERY DISTRIB_INFO)
  set(name "${system_ID}")
  if(name STREQUAL "debian")
    set(name deb)
  endif()
  # Debian's next release has no number yet.
  if(NOT system_VERSION_ID)
    set(system_VERSION_ID "${system_VERSION_CODENAME}")
  endif()
  # The program makes the same name of the system that it runs on, to take the package for it.
  string(APPEND name "${system_VERSION_ID}")
  set(${result} "${name}" PARENT_SCOPE)
endfunction()

kelo_find_package_system(kelo_this_system)
set(KELO_PACKAGE_SYSTEM "${kelo_this_system}" CACHE STRING "The system that the .deb is for, as its version names it; empty for none")
include(${CMAKE_CURRENT_LIST_DIR}/DebianVersion.cmake)
set(KELO_PACKAGE_VERSION "${kelo_debian_version}")
set(KELO_PACKAGE_NAME "kelo-${KELO_VERSION}")
if(KELO_PACKAGE_SYSTEM)
  # Before the version without it, if there ever is one.
  string(APPEND KELO_PACKAGE_VERSION "~${KELO_PACKAGE_SYSTEM}")
  string(APPEND KELO_PACKAGE_NAME "~${KELO_PACKAGE_SYSTEM}")
endif()
# As Debian calls the processor.
find_program(DPKG dpkg)
set(kelo_package_processor "${CMAKE_SYSTEM_PROCESSOR}")
if(DPKG)
  execute_process(COMMAND ${DPKG} --print-architecture OUTPUT_VARIABLE kelo_package_processor OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
string(APPEND KELO_PACKAGE_NAME "-${kelo_package_processor}")
set(KELO_TREE_NAME "kelo-${KELO_VERSION}-${CMAKE_SYSTEM_PROCESSOR}")
