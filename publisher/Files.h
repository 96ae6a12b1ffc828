#pragma once

#include "base/Bytes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::publisher {

/// A file that is mapped to memory, because a release can be large. Throws Failure if it is not a
/// regular file or cannot be read.
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

/// The content of a file; nothing if there is no such file. Throws Failure if it cannot be read.
std::optional<std::string> readText(const std::filesystem::path& path);

/// Writes a new file (0600). Throws Failure, also if the file exists already.
void writeNewSecretFile(const std::filesystem::path& path, std::string_view content);

/// Replaces a file atomically. Throws Failure; the old file is unchanged then.
void replaceFile(const std::filesystem::path& path, std::string_view content);

} // namespace kelo::publisher
