#pragma once

#include <filesystem>
#include <set>
#include <sys/types.h>

namespace kelo::bench {

/// The files that a process and everything it started have mapped: programs, libraries, fonts,
/// caches. Root alone sees those of sandboxed processes.
std::set<std::filesystem::path> mappedFiles(pid_t root);

/// How much of files the kernel keeps in memory, in bytes.
struct CachedFiles {
    double size = 0;
    double resident = 0;
};

/// Has the kernel forget the files, as after a start of the machine, and says what is left: what
/// other running programs have mapped stays. Nothing of anybody else's is touched, and nobody has
/// to be root.
CachedFiles dropFromCache(const std::set<std::filesystem::path>& files);

} // namespace kelo::bench
