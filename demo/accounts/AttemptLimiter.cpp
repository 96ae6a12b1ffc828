#include "demo/accounts/AttemptLimiter.h"

namespace kelo::demo {

bool AttemptLimiter::mayTry(const std::string& name, Time now) {
    auto& times = failures[name];
    while (!times.empty() && times.front() + window <= now)
        times.pop_front();
    return times.size() < triesPerWindow;
}

void AttemptLimiter::noteFailure(const std::string& name, Time now) {
    failures[name].push_back(now);
}

} // namespace kelo::demo
