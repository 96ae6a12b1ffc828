#pragma once

#include "platform/Bundle.h"

#include <filesystem>
#include <string>

namespace kelo::publisher {

/// What a package says of the release inside.
struct Package {
    std::string version;      ///< counts for updates (CFBundleVersion)
    std::string shortVersion; ///< what people are shown
    std::string feedUrl;      ///< or empty
    std::string publicKey;    ///< Base64, or empty
    /// What the program was built for, as feeds call it: "linux-x86_64", or "linux" when the
    /// program is no machine code.
    std::string system;
};

/// Whether the name is that of a package: .tar.zst, .tar.xz, .tar.gz or .deb.
bool isPackageName(const std::filesystem::path& name);

/// The name without those endings: notes bear it too.
std::string packageStem(const std::filesystem::path& name);

/// Looks into a tree's archive or a .deb. Throws Failure.
Package readPackage(const std::filesystem::path& path);

} // namespace kelo::publisher
