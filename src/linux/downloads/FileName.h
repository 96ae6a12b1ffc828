#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelo::downloads {

/// The name of a file, in the two parts that a number goes between.
struct FileName {
    std::string stem;
    /// With its dot. A compressed file has two: ".tar.gz". Empty if there is none.
    std::string extension;
};

/// The name for a file that somebody else suggests one for. It contains no folder, nothing that
/// shownLine() leaves out, and none of the characters that some file systems refuse. It is not
/// hidden, does not end with a dot or a blank, and is no name of a device. Never empty. Takes any
/// bytes; the name is UTF-8 and may still be too long.
FileName safeFileName(std::string_view suggestion);

/// "report.pdf" for 1, "report (2).pdf" for 2, and so on, in at most so many bytes. The stem loses
/// its end for that, but no character loses a part. mostBytes: at least 48.
std::string numbered(const FileName& name, unsigned number, std::size_t mostBytes);

} // namespace kelo::downloads
