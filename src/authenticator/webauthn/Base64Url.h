#pragma once

#include "platform/Bytes.h"

#include <string>

namespace kelo::authenticator {

/// RFC 4648 section 5, without padding.
std::string base64Url(platform::ByteView bytes);

} // namespace kelo::authenticator
