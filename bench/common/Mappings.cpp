#include "common/Mappings.h"

#include <array>
#include <cstdlib>
#include <sstream>

namespace kelo::bench {

namespace {

constexpr const char* unnamed = "heap and other memory without a file";

struct Group {
    const char* name;
    /// Of libraries' names.
    std::vector<std::string_view> beginnings;
};

// The first that fits counts.
const std::vector<Group>& groups() {
    static const std::vector<Group> all{
        {"C++ bindings",
         {"libgtkmm", "libpangomm", "libgiomm", "libglibmm", "libsigc", "libcairomm", "libstdc++",
          "libgcc_s"}},
        {"libraries used now and then",
         {"libarchive", "libxml2", "libplist", "libsqlite3", "libtss2", "libsecret", "libcmark",
          "libcbor", "libacl", "libbz2", "liblz4", "libnettle", "libgcrypt", "libgpg-error"}},
        {"cryptography",
         {"libcrypto", "libssl", "libgnutls", "libhogweed", "libgmp", "libp11-kit", "libtasn1",
          "libgiognutls"}},
        {"renderer",
         {"libLLVM", "libgallium", "swrast_dri", "libGL", "libEGL", "libgbm", "libdrm", "libglapi",
          "libvulkan", "libedit", "libz3", "libsensors"}},
        {"web engine", {"libwebkit",   "libjavascriptcore",
                        "libicu",      "libgst",
                        "liborc",      "libflite",
                        "libenchant",  "libhyphen",
                        "libmanette",  "libwoff2",
                        "libxslt",     "libsoup",
                        "libseccomp",  "libSvtAv1",
                        "libdav1d",    "librav1e",
                        "libaom",      "libgav1",
                        "libyuv",      "libabsl",
                        "libavif",     "libwebp",
                        "libnghttp2",  "libaspell",
                        "libhunspell", "libpsl",
                        "libunwind",   "libdw",
                        "libelf"}},
        {"toolkit",
         {"libgtk-4",
          "libglib-",
          "libgio-",
          "libgobject-",
          "libgmodule-",
          "libgthread-",
          "libpango",
          "libcairo",
          "libharfbuzz",
          "libgdk_pixbuf",
          "libgraphene",
          "libfontconfig",
          "libfreetype",
          "libX",
          "libxcb",
          "libwayland",
          "libepoxy",
          "libxkbcommon",
          "libcloudproviders",
          "libpixman",
          "libfribidi",
          "libthai",
          "libdatrie",
          "libgraphite2",
          "libpng",
          "libjpeg",
          "libtiff",
          "librsvg"}},
    };
    return all;
}

bool isLibrary(const std::string& name) {
    return name.find(".so") != std::string::npos && name.find('/') != std::string::npos;
}

std::string baseName(const std::string& name) {
    return name.substr(name.rfind('/') + 1);
}

/// "7f00-7f10 rw-p 00000000 fd:01 4711    /usr/lib/x.so": nothing for the lines that follow it.
struct Head {
    std::string begin;
    std::string end;
    std::string name;
};
bool readHead(const std::string& line, Head& head) {
    const auto dash = line.find('-');
    const auto space = line.find(' ');
    if (dash == std::string::npos || space == std::string::npos || dash > space ||
        line.find_first_not_of("0123456789abcdef-") != space)
        return false;
    head.begin = line.substr(0, dash);
    head.end = line.substr(dash + 1, space - dash - 1);
    std::istringstream fields(line);
    std::string field;
    for (int index = 0; index < 5; ++index)
        fields >> field;
    std::getline(fields >> std::ws, head.name);
    return true;
}

void readShare(const std::string& line, MemoryShare& share) {
    const double value = std::strtod(line.c_str() + line.find(':') + 1, nullptr);
    if (line.starts_with("Pss:"))
        share.proportional = value;
    else if (line.starts_with("Private_Dirty:"))
        share.privateDirty = value;
    else if (line.starts_with("Private_Clean:"))
        share.privateClean = value;
    else if (line.starts_with("Shared_Clean:") || line.starts_with("Shared_Dirty:"))
        share.shared += value;
}

} // namespace

MemoryShare& MemoryShare::operator+=(const MemoryShare& other) {
    proportional += other.proportional;
    privateDirty += other.privateDirty;
    privateClean += other.privateClean;
    shared += other.shared;
    return *this;
}

std::vector<Mapping> readMappings(std::string_view smaps) {
    std::vector<Mapping> mappings;
    std::istringstream lines{std::string(smaps)};
    std::string formerEnd;
    for (std::string line; std::getline(lines, line);) {
        Head head;
        if (readHead(line, head)) {
            const bool follows = !mappings.empty() && head.begin == formerEnd;
            if (head.name.empty() && follows && isLibrary(mappings.back().name))
                head.name = mappings.back().name;
            mappings.push_back({head.name, {}});
            formerEnd = head.end;
        } else if (!mappings.empty()) {
            readShare(line, mappings.back().share);
        }
    }
    return mappings;
}

std::string libraryOf(const std::string& name) {
    if (!isLibrary(name))
        return name.empty() ? unnamed : name;
    const std::string file = baseName(name);
    return file.substr(0, file.find(".so"));
}

std::string groupOf(const std::string& name) {
    if (name.empty() || name.starts_with("[heap]") || name.starts_with("[anon"))
        return unnamed;
    if (name.starts_with("["))
        return "stack and kernel";
    if (!isLibrary(name))
        return baseName(name).starts_with("kelo") && name.find("/share/") == std::string::npos
                   ? "the program itself"
                   : "other files (fonts, icons, caches, shared memory)";
    const std::string file = baseName(name);
    for (const auto& group : groups())
        for (const auto beginning : group.beginnings)
            if (file.starts_with(beginning))
                return group.name;
    return "C library and other libraries";
}

std::map<std::string, MemoryShare> byGroup(const std::vector<Mapping>& mappings) {
    std::map<std::string, MemoryShare> groups;
    for (const auto& mapping : mappings)
        groups[groupOf(mapping.name)] += mapping.share;
    return groups;
}

std::map<std::string, MemoryShare> byLibrary(const std::vector<Mapping>& mappings) {
    std::map<std::string, MemoryShare> libraries;
    for (const auto& mapping : mappings)
        libraries[libraryOf(mapping.name)] += mapping.share;
    return libraries;
}

} // namespace kelo::bench
