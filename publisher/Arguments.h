#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelo::publisher {

enum class Command { help, keygen, sign, generate, verify };

/// The parsed command line.
struct Arguments {
    Command command = Command::help;
    std::vector<std::filesystem::path> files;
    /// The private key's file: from --key, else from KELO_APPCAST_KEY, else empty.
    std::filesystem::path key;
    std::filesystem::path nextKey; ///< while the key is being changed; may be empty
    bool replace = false;          ///< sign packages again that were changed
    std::string publicKey;         ///< Base64, or empty
    std::string downloadUrl;       ///< ends with "/", or empty
    std::string pageUrl;           ///< may be empty
};

/// Parses the arguments after the program's name. keyVariable is the value of KELO_APPCAST_KEY, if
/// it is set. Throws UsageError.
Arguments parseArguments(std::span<const char* const> words,
                         const std::optional<std::string>& keyVariable);

/// The output of --help.
std::string helpText();

} // namespace kelo::publisher
