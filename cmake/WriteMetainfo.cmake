# Writes kelo_metainfo_installed: what lists of software show of this build. A file of its own so that a test can
# run it as a script.

foreach(kelo_address KELO_HOMEPAGE KELO_SCREENSHOT)
  if(${kelo_address} AND NOT ${kelo_address} MATCHES "^https://[A-Za-z0-9][^ \"'<>&]*$")
    message(FATAL_ERROR "${kelo_address} is \"${${kelo_address}}\": write it as https://host/path, or leave it empty.")
  endif()
endforeach()

set(kelo_metainfo ${CMAKE_CURRENT_LIST_DIR}/../data/app.kelo.Kelo.metainfo.xml)
if(NOT CMAKE_SCRIPT_MODE_FILE)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${kelo_metainfo})
endif()
file(READ ${kelo_metainfo} kelo_metainfo_text)

# A version with letters comes before the one without (src/updater/appcast/Version.h).
set(type stable)
if(KELO_VERSION MATCHES "[A-Za-z]")
  set(type development)
endif()
set(version "${KELO_VERSION}")
string(TIMESTAMP date "%Y-%m-%d" UTC)
string(CONFIGURE "${kelo_metainfo_text}" kelo_metainfo_text @ONLY)

set(kelo_addresses "")
if(KELO_HOMEPAGE)
  string(APPEND kelo_addresses "  <url type=\"homepage\">${KELO_HOMEPAGE}</url>\n")
endif()
if(KELO_SCREENSHOT)
  string(APPEND kelo_addresses "  <screenshots>\n    <screenshot type=\"default\">\n      <image>${KELO_SCREENSHOT}</image>\n    </screenshot>\n  </screenshots>\n")
endif()
string(REPLACE "  <launchable" "${kelo_addresses}  <launchable" kelo_metainfo_text "${kelo_metainfo_text}")
file(WRITE ${kelo_metainfo_installed} "${kelo_metainfo_text}")
