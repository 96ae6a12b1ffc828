#pragma once

#include "base/Failure.h"

#include <optional>
#include <string>

namespace kelo::tpm {

/// Why passkeys' keys cannot be made in the chip; nothing if they can. Blocks for up to a second.
/// chip: see TpmKeyStore.
std::optional<Failure> chipTrouble(const std::string& chip);

} // namespace kelo::tpm
