#pragma once

#include "base/Bytes.h"

#include <optional>
#include <string_view>

namespace kelo::updater {

/// Decodes Base64 (RFC 4648, section 4). Blanks around the text are ignored. Strict otherwise:
/// nothing for a text without padding, or one that no encoder would have written.
std::optional<Bytes> decodeBase64(std::string_view text);

} // namespace kelo::updater
