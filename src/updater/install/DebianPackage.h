#pragma once

#include <string>

namespace kelo::updater {

/// What a .deb says of itself.
struct DebianPackage {
    std::string name;         ///< Package, in its control file
    std::string architecture; ///< Architecture, there: "amd64", "arm64"...
    std::string version;      ///< CFBundleVersion, in the program's information dictionary
};

/// Reads a .deb from its beginning, whatever the descriptor's offset. Throws an UpdateError if it
/// is none, lacks one of these, or says one twice. Blocks.
DebianPackage readDebianPackage(int package);

} // namespace kelo::updater
