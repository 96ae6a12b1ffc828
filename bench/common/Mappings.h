#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::bench {

/// What a part of a process's memory takes, in KiB.
struct MemoryShare {
    double proportional = 0; ///< each shared page divided among its processes
    double privateDirty = 0;
    double privateClean = 0;
    double shared = 0; ///< by at least two processes now, in full

    MemoryShare& operator+=(const MemoryShare& other);
};

/// One mapping. Without a name it is memory that no file is behind.
struct Mapping {
    std::string name;
    MemoryShare share;
};

/// What /proc/PID/smaps says. Memory without a name right behind a library's is the library's: its
/// variables that begin as zero.
std::vector<Mapping> readMappings(std::string_view smaps);

/// The library of a path, "libgtk-4"; the whole name for what is no library.
std::string libraryOf(const std::string& name);

/// The kind of thing that a mapping of this name is for: "C++ bindings", "cryptography" …
std::string groupOf(const std::string& name);

std::map<std::string, MemoryShare> byGroup(const std::vector<Mapping>& mappings);
std::map<std::string, MemoryShare> byLibrary(const std::vector<Mapping>& mappings);

} // namespace kelo::bench
