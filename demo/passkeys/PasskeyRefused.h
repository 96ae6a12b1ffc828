#pragma once

#include <stdexcept>

namespace kelo::demo {

/// Why a passkey is not accepted: a short phrase in English that begins with a capital and has no
/// full stop.
class PasskeyRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kelo::demo
