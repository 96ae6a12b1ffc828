# Run by cpack before it packs a tree: puts the libraries beside the programs whose names differ between the
# systems that the tree is for, and lets the programs look there first. A package is for one system and
# asks for them by name.
#
# Beside the programs and in no folder of their own: where a file system cannot let two folders change places,
# the updater moves folders one by one, but a program's folder file by file, each in one step. So the old
# program finds its libraries whenever that stops.

if(NOT CPACK_KELO_PATCHELF)
  message(FATAL_ERROR "A tree brings libraries along, and there is no patchelf to tell its programs so. Install it, and configure again.")
endif()

# A library may be passed on with its license only.
function(kelo_bring_license library name)
  file(REAL_PATH "${library}" file)
  execute_process(COMMAND dpkg-query --search "${file}" OUTPUT_VARIABLE owner ERROR_QUIET)
  string(REGEX REPLACE ":.*" "" owner "${owner}")
  if(NOT EXISTS "/usr/share/doc/${owner}/copyright")
    message(FATAL_ERROR "The license of ${file} was not found, and the tree must hold it.")
  endif()
  configure_file("/usr/share/doc/${owner}/copyright"
    "${CPACK_TEMPORARY_DIRECTORY}/share/doc/kelo/copyright-${name}" COPYONLY)
endfunction()

set(bin "${CPACK_TEMPORARY_DIRECTORY}/bin")
file(GLOB programs "${bin}/kelo*" "${CPACK_TEMPORARY_DIRECTORY}/libexec/kelo/kelo*")
foreach(program IN LISTS programs)
  file(GET_RUNTIME_DEPENDENCIES EXECUTABLES "${program}"
    PRE_INCLUDE_REGEXES "^lib(cbor|plist-2\\.0)\\.so"
    PRE_EXCLUDE_REGEXES ".*"
    RESOLVED_DEPENDENCIES_VAR libraries)
  foreach(library IN LISTS libraries)
    # Under the name that programs ask for, whatever file that is a link to.
    get_filename_component(name "${library}" NAME)
    configure_file("${library}" "${bin}/${name}" COPYONLY NO_SOURCE_PERMISSIONS)
    kelo_bring_license("${library}" "${name}")
  endforeach()
  if(libraries)
    get_filename_component(folder "${program}" DIRECTORY)
    file(RELATIVE_PATH way "${folder}" "${bin}")
    execute_process(COMMAND "${CPACK_KELO_PATCHELF}" --set-rpath "$ORIGIN/${way}" "${program}" COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
