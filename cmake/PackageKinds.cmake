# Read by cpack once for each kind of package.

if(CPACK_GENERATOR STREQUAL "DEB")
  # Files for /etc must go through DESTDIR, or they would be installed on the machine that packs.
  set(CPACK_SET_DESTDIR ON)
  set(CPACK_INSTALL_PREFIX /usr)
  set(kelo_components Unspecified system debian)
else()
  # Unpacked by a user, anywhere: nothing of it has a fixed place.
  set(kelo_components Unspecified tree)
  set(CPACK_PRE_BUILD_SCRIPTS ${CPACK_KELO_TREE_SCRIPTS})
endif()

# One package of several components: the same build tree once for each.
list(GET CPACK_INSTALL_CMAKE_PROJECTS 0 kelo_build_tree)
set(CPACK_INSTALL_CMAKE_PROJECTS "")
foreach(component IN LISTS kelo_components)
  list(APPEND CPACK_INSTALL_CMAKE_PROJECTS ${kelo_build_tree} Kelo ${component} /)
endforeach()
set(CPACK_MONOLITHIC_INSTALL OFF)
