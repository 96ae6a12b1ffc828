# How every file of ours is compiled: language, warnings, hardening, sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG" CACHE STRING "Flags of the Release build type" FORCE)
# By force, because project() has put an empty text there, whatever the build type is called.
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g -fno-omit-frame-pointer" CACHE STRING "Flags of the Sanitize build type" FORCE)

option(KELO_BUILD_FUZZERS "Build the fuzz targets (Clang only)" OFF)
if(KELO_BUILD_FUZZERS)
  # libFuzzer comes with Clang alone. Every file of ours tells it which way it went.
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "The fuzz targets need Clang: use scripts/fuzz, or configure with -DCMAKE_CXX_COMPILER=clang++.")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

option(KELO_WARNINGS_AS_ERRORS "Stop at the first warning in our own code" OFF)
set(KELO_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

option(KELO_HIDE_PATHS "Compile in no path of this build's folders, so that another folder gives the same program" OFF)
if(KELO_HIDE_PATHS)
  # Of those that fit, the last one counts. The compiler's cache writes the first relative to the build.
  file(RELATIVE_PATH kelo_way_to_source ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
  string(REGEX REPLACE "/$" "" kelo_way_to_source "${kelo_way_to_source}")
  foreach(front IN ITEMS ${PROJECT_SOURCE_DIR} ${kelo_way_to_source} ${PROJECT_BINARY_DIR})
    add_compile_options(-ffile-prefix-map=${front}/=)
  endforeach()
endif()

find_program(CCACHE ccache)
if(CCACHE)
  # Paths below the project's root count as relative to it, so that one clone finds what another has
  # compiled; without the sloppiness ccache refuses files that use a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    ${CCACHE})
endif()

add_library(kelo_compiler INTERFACE)
target_compile_options(kelo_compiler INTERFACE -Wall -Wextra -Wpedantic)
# One domain for everything we log through GLib, so that G_MESSAGES_DEBUG=Kelo selects it.
target_compile_definitions(kelo_compiler INTERFACE G_LOG_DOMAIN="Kelo")
# The oldest toolkit that Kelo is built with. What a newer one calls deprecated is no warning, as long as
# the oldest has nothing to put in its place; what a newer one adds is asked for by its version.
target_compile_definitions(kelo_compiler INTERFACE
  GDK_VERSION_MIN_REQUIRED=GDK_VERSION_4_8 GDK_VERSION_MAX_ALLOWED=GDK_VERSION_4_8)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 warns of overlapping copies in plain string concatenation, wrongly:
  # https://gcc.gnu.org/bugzilla/show_bug.cgi?id=105651. Remove when GCC 12 is no longer supported.
  target_compile_options(kelo_compiler INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 16)
  # Stands in for a header of GCC's standard library that Clang 14 cannot use. Remove when Clang 16 is
  # the oldest that scripts/lint and scripts/fuzz meet.
  include_directories(BEFORE SYSTEM ${PROJECT_SOURCE_DIR}/cmake/clang)
endif()
if(KELO_WARNINGS_AS_ERRORS)
  target_compile_options(kelo_compiler INTERFACE -Werror)
endif()

if(KELO_SANITIZE)
  add_compile_options(-fsanitize=${KELO_SANITIZE} -fno-sanitize-recover=all)
  # The web engine is built without type information and ends up in our copies of inline functions of
  # the standard library, where the check of the type would take its objects for corrupt ones.
  add_compile_options(-fno-sanitize=vptr)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Clang 14 cannot put this check's data in front of a coroutine.
    add_compile_options(-fno-sanitize=function)
  endif()
  add_link_options(-fsanitize=${KELO_SANITIZE})
else()
  add_compile_options(-fstack-protector-strong)
  add_compile_definitions($<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
  add_link_options(-Wl,-z,relro,-z,now)
endif()
