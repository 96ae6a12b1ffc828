#pragma once

#include "posix/FileDescriptor.h"
#include "testing/TemporaryFolder.h"

#include <filesystem>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo::tests {

/// A temporary folder in memory if the system has a place for that: the installer waits for the
/// disk many times.
class TreeFolder : public test::TemporaryFolder {
public:
    TreeFolder();
};

void writeFile(const std::filesystem::path& path, const std::string& content, mode_t mode = 0644);
std::string readFile(const std::filesystem::path& path);

/// Paths and contents of everything below the folder.
using Contents = std::map<std::string, std::string>;
Contents contentsOf(const std::filesystem::path& folder);

/// Writes a tree in which every file contains the version; its program prints it. 1.0 has other
/// files than the other versions.
void writeTree(const std::filesystem::path& root, const std::string& version);

/// The Info.plist of a version.
std::string information(const std::string& version);

struct TarEntry {
    std::string path;
    mode_t type = 0100000; ///< as in st_mode
    mode_t permissions = 0644;
    std::string content = {};
    std::string symbolicLink = {};
    std::string hardLink = {};
};

/// Writes a tar archive, compressed as its name says (zst, xz or gz).
void writeArchive(const std::filesystem::path& archive, const std::vector<TarEntry>& entries);

/// Packs a tree under one top folder.
void packTree(const std::filesystem::path& root, const std::string& top,
              const std::filesystem::path& archive);

/// An archive inside a .deb, compressed as its name says.
struct PackageMember {
    std::string name;
    std::vector<TarEntry> entries;
};
void writeMembers(const std::filesystem::path& package, const std::vector<PackageMember>& members);

/// A .deb, as much of it as says what it is.
struct PackageDescription {
    std::string name = "kelo";
    std::string architecture = "amd64";
    std::string version = "1.1"; ///< in its Info.plist
    std::vector<TarEntry> more = {};
};
void writePackage(const std::filesystem::path& package, const PackageDescription& description);

posix::FileDescriptor openForReading(const std::filesystem::path& path);

/// The output of the program without arguments; empty unless it exits with status 0.
std::string outputOf(const std::filesystem::path& program);

} // namespace kelo::tests
