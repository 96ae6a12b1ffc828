#pragma once

#include "platform/Bundle.h"

#include <filesystem>
#include <string>

namespace kelo::publisher {

/// What a package says about its release.
struct Package {
    std::string version;      ///< decides about updates (CFBundleVersion)
    std::string shortVersion; ///< the version that users see
    std::string feedUrl;      ///< may be empty
    std::string publicKey;    ///< Base64; may be empty
    /// System of the program as feeds name it: "linux-x86_64", or "linux" if the program is not an
    /// ELF file of a known processor.
    std::string system;
    /// Oldest C library that the program runs with (LSMinimumSystemVersion); may be empty.
    std::string minimumSystem;
    bool requiresSignedFeed = false;
};

/// Whether the extension is that of a package: .tar.zst, .tar.xz, .tar.gz or .deb.
bool isPackageName(const std::filesystem::path& name);

/// The name without that extension. Files with release notes have the same stem.
std::string packageStem(const std::filesystem::path& name);

/// Reads the archive of a tree, or a .deb. Throws Failure.
Package readPackage(const std::filesystem::path& path);

} // namespace kelo::publisher
