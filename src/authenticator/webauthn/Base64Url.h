#pragma once

#include "base/Bytes.h"

#include <string>

namespace kelo::webauthn {

/// RFC 4648 section 5, without padding.
std::string base64Url(ByteView bytes);

} // namespace kelo::webauthn
