#pragma once

#include <string_view>

namespace kelo::deployment {

/// PEM text of the one certificate authority trusted besides the system's own; empty when the build
/// named none.
extern const std::string_view trustedAuthorityPem;

} // namespace kelo::deployment
