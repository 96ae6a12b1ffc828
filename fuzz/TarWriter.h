#pragma once

#include <string>
#include <string_view>

namespace kelo::fuzz {

/// An archive as the text describes it, with the checksums that a reader asks for. Each line is an
/// entry: its type, its permissions in octal, its path, and after ">" its content or target.
///
///   f 755 kelo/bin/kelo>program     file
///   d 755 kelo/lib                  folder
///   l 777 kelo/lib/a>../bin/kelo    symbolic link; h is a hard link, p a pipe, c a device
///   x path=kelo/other               a pax record for the next entry
///   L kelo/long/name                a GNU name for the next entry; K is the same for its target
std::string tarOf(std::string_view description);

/// The archive with every header's checksum put right, so that a changed header is still read.
std::string withChecksums(std::string_view archive);

} // namespace kelo::fuzz
