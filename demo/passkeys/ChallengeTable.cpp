#include "demo/passkeys/ChallengeTable.h"

#include "demo/base/Random.h"

#include <algorithm>

namespace kelo::demo {

Bytes ChallengeTable::issue(std::string_view holder, Time now) {
    forgetExpired(now);
    if (entries.size() == capacity)
        entries.pop_front();
    entries.push_back({randomBytes(32), std::string(holder), now + lifetime});
    return entries.back().challenge;
}

bool ChallengeTable::consume(ByteView challenge, std::string_view holder, Time now) {
    forgetExpired(now);
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& candidate) {
        return std::ranges::equal(candidate.challenge, challenge);
    });
    if (entry == entries.end())
        return false;
    const bool held = entry->holder == holder;
    entries.erase(entry);
    return held;
}

void ChallengeTable::forgetExpired(Time now) {
    while (!entries.empty() && entries.front().expires <= now)
        entries.pop_front();
}

} // namespace kelo::demo
