#pragma once

#include <stop_token>

namespace kelo {

/// Stops the work on a worker when the waiting coroutine, whose local variable this is, is
/// destroyed. The worker is then free for the next request instead of waiting, for instance, for
/// the user to unlock the keyring.
class StopWhenDropped {
public:
    StopWhenDropped() = default;
    ~StopWhenDropped() { source.request_stop(); }
    StopWhenDropped(const StopWhenDropped&) = delete;
    StopWhenDropped& operator=(const StopWhenDropped&) = delete;
    std::stop_token token() const { return source.get_token(); }

private:
    std::stop_source source;
};

} // namespace kelo
