#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelo::publisher {

enum class Command { help, keygen, sign, generate, verify };

/// What the command line asks for.
struct Arguments {
    Command command = Command::help;
    std::vector<std::filesystem::path> files;
    /// The private key's file: --key, or else what KELO_APPCAST_KEY names; empty when neither does.
    std::filesystem::path key;
    std::string publicKey;   ///< Base64, or empty
    std::string downloadUrl; ///< ends in "/", or is empty
    std::string pageUrl;     ///< or empty
};

/// The words after the program's name. keyVariable is the value of KELO_APPCAST_KEY, if it is set.
/// Throws UsageError.
Arguments parseArguments(std::span<const char* const> words,
                         const std::optional<std::string>& keyVariable);

std::string helpText();

} // namespace kelo::publisher
