#pragma once

#include "base/Bytes.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace kelo::demo {

/// The open challenges of one kind of ceremony. Each is valid once, for five minutes, and only for
/// the holder it was issued to.
class ChallengeTable {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::minutes lifetime{5};
    /// Anyone may ask for a challenge, so beyond this number the oldest is dropped.
    static constexpr std::size_t capacity = 1024;

    /// A new challenge of 32 bytes. The holder is for instance a session; empty for anyone.
    Bytes issue(std::string_view holder, Time now);

    /// Whether this challenge was issued to this holder, has not expired and was not checked
    /// before. The check uses it up, whatever the result.
    bool consume(ByteView challenge, std::string_view holder, Time now);

private:
    struct Entry {
        Bytes challenge;
        std::string holder;
        Time expires;
    };

    void forgetExpired(Time now);

    std::deque<Entry> entries; ///< oldest first
};

} // namespace kelo::demo
