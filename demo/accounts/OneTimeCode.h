#pragma once

#include "base/Bytes.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelo::demo {

/// The six digits of RFC 6238 (SHA-1, steps of 30 seconds) for one account.
class OneTimeCode {
public:
    using Time = std::chrono::system_clock::time_point;

    explicit OneTimeCode(Bytes secret);

    std::string current(Time now) const;

    /// Accepts the code of this step and, for slow typists, of the one before. An accepted code and
    /// all earlier ones are not accepted again.
    bool accept(std::string_view code, Time now);

private:
    std::string codeAt(std::int64_t step) const;

    Bytes secret;
    std::int64_t lastAccepted = -1;
};

} // namespace kelo::demo
