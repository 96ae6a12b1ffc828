#include "demo/passkeys/PasskeyStore.h"

#include <algorithm>
#include <utility>

namespace kelo::demo {
namespace {

Bytes copyOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

} // namespace

bool PasskeyStore::add(Passkey passkey) {
    auto identifier = passkey.credentialId;
    return passkeys.try_emplace(std::move(identifier), std::move(passkey)).second;
}

void PasskeyStore::remove(ByteView credentialId) {
    passkeys.erase(copyOf(credentialId));
}

Passkey* PasskeyStore::find(ByteView credentialId) {
    const auto found = passkeys.find(copyOf(credentialId));
    return found == passkeys.end() ? nullptr : &found->second;
}

std::vector<Passkey> PasskeyStore::of(std::string_view email) const {
    std::vector<Passkey> own;
    for (const auto& [identifier, passkey] : passkeys) {
        if (passkey.email == email)
            own.push_back(passkey);
    }
    std::ranges::stable_sort(own, {}, &Passkey::registered);
    return own;
}

} // namespace kelo::demo
