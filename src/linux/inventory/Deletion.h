#pragma once

#include "authenticator/consent/UserVerifier.h"

#include <string>
#include <string_view>

/// What the owner of a passkey is told when it is deleted, in the terminal and in the window.
namespace kelo::inventory {

/// Before: what is lost, and what is left to do. The account need not be fit to be shown.
std::string deletionWarning(std::string_view account, std::string_view service);

/// For an owner who has not agreed.
std::string nothingDeleted();

/// For one who was not verified. Not for VerificationOutcome::verified.
std::string refusalFor(authenticator::VerificationOutcome outcome);

std::string passkeyDeleted();

} // namespace kelo::inventory
