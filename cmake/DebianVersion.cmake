# Sets kelo_debian_version: what Debian's tools call KELO_VERSION with KELO_BUILD_NUMBER. They order versions
# as Kelo does (src/updater/appcast/Version.h), and of one version the builds. A file of its own so that a test
# can run it as a script.

if(NOT KELO_VERSION MATCHES "^([0-9]+(\\.[0-9]+)*)(.*)$")
  message(FATAL_ERROR "KELO_VERSION is \"${KELO_VERSION}\", which begins with no number.")
endif()
set(kelo_numbers "${CMAKE_MATCH_1}")
set(kelo_pre_release "${CMAKE_MATCH_3}")

# For Kelo, 1, 1.0 and 1.0.0 are one version; for Debian, each is newer than the one before.
while(kelo_numbers MATCHES "^(.*)\\.0+$")
  set(kelo_numbers "${CMAKE_MATCH_1}")
endwhile()
if(NOT kelo_numbers MATCHES "\\.")
  string(APPEND kelo_numbers ".0")
endif()

# Letters make a pre-release for Kelo, and something newer for Debian unless a tilde is before them.
if(kelo_pre_release)
  set(kelo_pre_release "~${kelo_pre_release}")
endif()
set(kelo_debian_version "${kelo_numbers}${kelo_pre_release}-${KELO_BUILD_NUMBER}")

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  message(STATUS "${kelo_debian_version}")
endif()
