#pragma once

#include "linux/authorization/keyring/KeyringState.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "linux/inventory/overview/Finding.h"

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace kelo::inventory {

/// What passkeys need of this computer, as it was found.
struct Surroundings {
    /// Why the security chip cannot be used: the sentence for the user. Nothing if it can be.
    std::optional<std::string> chipTrouble;
    authorization::KeyringState keyring = authorization::KeyringState::absent;
    authorization::VerificationMeans verification = authorization::VerificationMeans::noHelper;
    /// Why the file with the passkeys cannot be read: the sentence for the user.
    std::optional<std::string> fileTrouble;
    std::size_t passkeys = 0;
    /// How many of them are in the chip.
    std::size_t passkeysInChip = 0;
};

/// Looks at this computer. Changes nothing and asks the user nothing. Blocks for up to some
/// seconds; a stop ends the wait for a keyring that does not answer, which then counts as absent.
Surroundings lookAround(const std::stop_token& stop = {});

/// What the user should know of it, always in the same order.
std::vector<Finding> diagnose(const Surroundings& found);

} // namespace kelo::inventory
