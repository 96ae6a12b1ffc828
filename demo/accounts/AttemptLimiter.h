#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <string>

namespace kelo::demo {

/// Slows down guessing: after a number of wrong attempts within a minute, an account accepts none
/// until the oldest is a minute old.
class AttemptLimiter {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::size_t triesPerWindow = 10;
    static constexpr std::chrono::minutes window{1};

    /// Names come from a fixed set: the table grows by one entry for each and never shrinks.
    bool mayTry(const std::string& name, Time now);
    void noteFailure(const std::string& name, Time now);

private:
    std::map<std::string, std::deque<Time>> failures; ///< by name, oldest first
};

} // namespace kelo::demo
