# Run by cpack before it packs a tree: lists the tree's files in the tree itself. The updater replaces
# a tree only while it holds nothing else, so that no file of the user's is ever thrown away with it.

set(list share/kelo/files.txt)
file(WRITE "${CPACK_TEMPORARY_DIRECTORY}/${list}" "")
file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${CPACK_TEMPORARY_DIRECTORY}" "${CPACK_TEMPORARY_DIRECTORY}/*")
list(SORT files)
list(JOIN files "\n" text)
file(WRITE "${CPACK_TEMPORARY_DIRECTORY}/${list}" "${text}\n")
file(CHMOD "${CPACK_TEMPORARY_DIRECTORY}/${list}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
