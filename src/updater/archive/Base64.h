#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string_view>

namespace kelo::updater {

/// The bytes of a Base64 text (RFC 4648, section 4), blanks around it aside. Strict: padding must
/// be there, and nothing that an encoder would not have written.
std::optional<Bytes> decodeBase64(std::string_view text);

} // namespace kelo::updater
