#pragma once

#include "base/Bytes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::publisher {

/// The bytes of a file, mapped: a release need not fit into memory twice. Throws Failure when it
/// is no regular file or cannot be read.
class MappedFile {
public:
    explicit MappedFile(const std::filesystem::path& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    ByteView bytes() const { return {start, size}; }

private:
    const std::uint8_t* start = nullptr;
    std::size_t size = 0;
};

/// The text of a file; nothing when there is none. Throws Failure when it cannot be read.
std::optional<std::string> readText(const std::filesystem::path& path);

/// Writes a new file that only the user can read. Throws Failure, also when there is one already.
void writeNewSecretFile(const std::filesystem::path& path, std::string_view content);

/// Replaces a file in one step. Throws Failure; the old one is then untouched.
void replaceFile(const std::filesystem::path& path, std::string_view content);

} // namespace kelo::publisher
