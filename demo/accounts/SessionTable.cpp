#include "demo/accounts/SessionTable.h"

#include "base/Base64.h"
#include "demo/base/Digest.h"
#include "demo/base/Random.h"

#include <utility>

namespace kelo::demo {
namespace {

std::string identifierOf(std::string_view token) {
    return base64URLEncode(sha256(token));
}

} // namespace

std::string SessionTable::open(std::string_view email, Time now) {
    makeRoom(email, now);
    std::string token = randomToken();
    restore({identifierOf(token), std::string(email), randomToken(), now + lifetime});
    return token;
}

const Session* SessionTable::find(std::string_view token, Time now) const {
    const auto found = sessions.find(identifierOf(token));
    return found != sessions.end() && found->second.expires > now ? &found->second : nullptr;
}

void SessionTable::close(const std::string& identifier) {
    sessions.erase(identifier);
}

void SessionTable::restore(Session session) {
    auto identifier = session.identifier;
    sessions.insert_or_assign(std::move(identifier), std::move(session));
}

void SessionTable::makeRoom(std::string_view email, Time now) {
    std::erase_if(sessions, [now](const auto& entry) { return entry.second.expires <= now; });
    std::size_t count = 0;
    auto first = sessions.end();
    for (auto entry = sessions.begin(); entry != sessions.end(); ++entry) {
        if (entry->second.email != email)
            continue;
        ++count;
        if (first == sessions.end() || entry->second.expires < first->second.expires)
            first = entry;
    }
    if (count >= capacity)
        sessions.erase(first);
}

} // namespace kelo::demo
