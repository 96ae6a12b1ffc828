# Rooms are the folders below src/. Each is a target that sees its own headers, those of the rooms it
# links, and nothing else: an #include that runs against the layering does not compile.

# kelo_room(app SOURCES a.cpp LINKS platform PRIVATE service SHOWS A.h PACKAGES PkgConfig::X)
#   name              the folder below src/, for instance linux/gtk/kit
#   SOURCES           .cpp files, relative to that folder
#   SHOWS             the headers that other rooms may include; all of the folder's when left out
#   LINKS             rooms whose headers this room's own headers include, handed on to its users
#   PRIVATE           rooms that only its .cpp files include
#   PACKAGES          libraries from outside that its headers include, handed on to its users
#   PRIVATE_PACKAGES  libraries that only its .cpp files, or headers it does not show, include
function(kelo_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;SHOWS;LINKS;PRIVATE;PACKAGES;PRIVATE_PACKAGES" ${ARGN})
  if(ROOM_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "kelo_room(${name}): what is ${ROOM_UNPARSED_ARGUMENTS}?")
  endif()
  string(REPLACE "/" "_" flat ${name})
  set(target kelo_${flat})
  set_property(GLOBAL APPEND PROPERTY KELO_ROOMS ${flat}) # for the tests of the layering
  set(folder ${PROJECT_SOURCE_DIR}/src/${name})
  set(shown ${PROJECT_BINARY_DIR}/rooms/${flat}/shown)
  set(hidden ${PROJECT_BINARY_DIR}/rooms/${flat}/hidden)

  # Header by header rather than the whole folder: a room inside the folder is a room of its own.
  file(GLOB headers RELATIVE ${folder} CONFIGURE_DEPENDS ${folder}/*.h)
  file(REMOVE_RECURSE ${PROJECT_BINARY_DIR}/rooms/${flat})
  file(MAKE_DIRECTORY ${shown}/${name} ${hidden}/${name})
  if(NOT ROOM_SHOWS)
    set(ROOM_SHOWS ${headers})
  endif()
  foreach(header ${headers})
    if(header IN_LIST ROOM_SHOWS)
      file(CREATE_LINK ${folder}/${header} ${shown}/${name}/${header} SYMBOLIC)
    else()
      file(CREATE_LINK ${folder}/${header} ${hidden}/${name}/${header} SYMBOLIC)
    endif()
  endforeach()

  foreach(kind LINKS PRIVATE)
    list(TRANSFORM ROOM_${kind} REPLACE "/" "_")
    list(TRANSFORM ROOM_${kind} PREPEND kelo_)
  endforeach()
  if(ROOM_SOURCES)
    list(TRANSFORM ROOM_SOURCES PREPEND ${folder}/)
    add_library(${target} STATIC ${ROOM_SOURCES})
    target_include_directories(${target} PUBLIC ${shown} PRIVATE ${hidden})
    target_link_libraries(${target}
      PUBLIC ${ROOM_LINKS} ${ROOM_PACKAGES}
      PRIVATE ${ROOM_PRIVATE} ${ROOM_PRIVATE_PACKAGES} kelo_compiler)
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${shown})
    target_link_libraries(${target} INTERFACE ${ROOM_LINKS} ${ROOM_PACKAGES})
  endif()
endfunction()

# kelo_look_inside(unit_appcast updater/appcast ...)
#   Lets a target include, and link what is needed for, the headers that the rooms do not show: for
#   the rooms' own tests.
function(kelo_look_inside target)
  foreach(name ${ARGN})
    string(REPLACE "/" "_" flat ${name})
    target_include_directories(${target} PRIVATE ${PROJECT_BINARY_DIR}/rooms/${flat}/hidden)
    target_link_libraries(${target} PRIVATE kelo_${flat})
  endforeach()
endfunction()
