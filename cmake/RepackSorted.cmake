# Run by cpack after it has packed: packs the same files once more, so that the same files give the same package.
# cpack takes them in the order in which the file system has them, which differs between two machines, and
# divides the work of compression among the processors, which shows in the result. Folders have the rights that
# the packer's own umask left them.

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(date "$ENV{SOURCE_DATE_EPOCH}")
else()
  string(TIMESTAMP date "%s" UTC)
endif()

function(kelo_run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${CPACK_TOPLEVEL_DIRECTORY}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# cpack asks the file system how much room the files take, and each has another answer. Debian's own tools count
# whole KiB, and one for whatever is no file.
function(kelo_count_size folder)
  file(GLOB_RECURSE paths LIST_DIRECTORIES true "${folder}/etc/*" "${folder}/usr/*")
  set(size 2)
  foreach(path IN LISTS paths)
    set(length 1024)
    if(NOT IS_DIRECTORY "${path}")
      file(SIZE "${path}" length)
    endif()
    math(EXPR size "${size} + (${length} + 1023) / 1024")
  endforeach()
  file(READ "${folder}/DEBIAN/control" control)
  string(REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${size}" control "${control}")
  file(WRITE "${folder}/DEBIAN/control" "${control}")
endfunction()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(again "${CPACK_TOPLEVEL_DIRECTORY}/again")
  file(REMOVE_RECURSE "${again}")
  file(MAKE_DIRECTORY "${again}")
  if(package MATCHES "\\.deb$")
    kelo_run(dpkg-deb --raw-extract "${package}" "${again}")
    kelo_run(find "${again}" -type d -exec chmod 755 {} +)
    kelo_count_size("${again}")
    # Only dates after this one are set to it.
    kelo_run(find "${again}" -exec touch --no-dereference "--date=@${date}" {} +)
    set(ENV{SOURCE_DATE_EPOCH} "${date}")
    kelo_run(dpkg-deb --root-owner-group --threads-max=1 -Zxz --build "${again}" "${package}")
  else()
    kelo_run(tar --extract --same-permissions --file "${package}" --directory "${again}")
    kelo_run(find "${again}" -type d -exec chmod 755 {} +)
    # No headers of the kind that hold access times and the number of the process that packs.
    kelo_run(tar --create --file "${again}.tar" --directory "${again}" --format=ustar --sort=name
      "--mtime=@${date}" --owner=0 --group=0 --numeric-owner "${CPACK_PACKAGE_FILE_NAME}")
    kelo_run(zstd -q -f -19 --single-thread -o "${package}" "${again}.tar")
    file(REMOVE "${again}.tar")
  endif()
  file(REMOVE_RECURSE "${again}")
endforeach()
