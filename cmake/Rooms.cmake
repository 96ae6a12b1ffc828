# Rooms are the folders below src/. Each is a target that sees only the rooms it names: its include
# path holds a link to its own folder and, through its links, to theirs, and to nothing else. An
# #include that runs against the layering therefore does not compile.

# kelo_room(app SOURCES a.cpp LINKS platform passkey PACKAGES PkgConfig::X)
#   name      the folder below src/, for instance linux/gtk
#   SOURCES   .cpp files, relative to that folder
#   LINKS     rooms it may include
#   PACKAGES  libraries from outside
function(kelo_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS;PACKAGES" ${ARGN})
  string(REPLACE "/" "_" flat ${name})
  set(target kelo_${flat})
  set(folder ${PROJECT_SOURCE_DIR}/src/${name})
  set(view ${PROJECT_BINARY_DIR}/rooms/${flat})

  cmake_path(GET name PARENT_PATH parent)
  file(MAKE_DIRECTORY ${view}/${parent})
  file(CREATE_LINK ${folder} ${view}/${name} SYMBOLIC)

  list(TRANSFORM ROOM_SOURCES PREPEND ${folder}/)
  list(TRANSFORM ROOM_LINKS REPLACE "/" "_")
  list(TRANSFORM ROOM_LINKS PREPEND kelo_)

  if(ROOM_SOURCES)
    add_library(${target} STATIC ${ROOM_SOURCES})
    target_include_directories(${target} PUBLIC ${view})
    target_link_libraries(${target} PUBLIC ${ROOM_LINKS} ${ROOM_PACKAGES} PRIVATE kelo_compiler)
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${view})
    target_link_libraries(${target} INTERFACE ${ROOM_LINKS} ${ROOM_PACKAGES})
  endif()
endfunction()
