#pragma once

#include "base/Bytes.h"

#include <cstddef>
#include <string>

namespace kelo::demo {

/// Cryptographically random bytes. Throws ServiceError if the system provides none.
Bytes randomBytes(std::size_t count);

/// 256 unguessable bits as unpadded base64url: 43 characters that need no escaping in a cookie, a
/// form or JSON.
std::string randomToken();

} // namespace kelo::demo
