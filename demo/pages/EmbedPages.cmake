# Writes the source file that holds the service's pages: the program needs no files beside it.
# FILES is a list of paths, parted by "|".
string(REPLACE "|" ";" files "${FILES}")
set(entries "")
foreach(file IN LISTS files)
  file(READ "${file}" text)
  if(text MATCHES "\\)PAGE\"")
    message(FATAL_ERROR "${file} holds the mark that ends a text in the generated source.")
  endif()
  get_filename_component(name "${file}" NAME)
  string(APPEND entries "        {\"${name}\", R\"PAGE(${text})PAGE\"},\n")
endforeach()
file(WRITE "${OUTPUT}.new" "#include \"demo/pages/EmbeddedPages.h\"

#include <map>

namespace kelo::demo {

std::string_view embeddedPage(std::string_view name) {
    static const std::map<std::string_view, std::string_view> pages{
${entries}    };
    return pages.at(name);
}

}
")
file(COPY_FILE "${OUTPUT}.new" "${OUTPUT}")
