#pragma once

#include "base/Bytes.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::demo {

/// A registered passkey, as the service knows it.
struct Passkey {
    Bytes credentialId;
    Bytes publicKey;   ///< P-256: x and y, 32 bytes each
    std::string email; ///< of the account that owns it
    std::string label;
    std::chrono::system_clock::time_point registered;
    std::uint32_t counter = 0;
    bool backupEligible = false; ///< fixed at creation; a change means another key
};

class PasskeyStore {
public:
    /// False if the credential id exists already; then nothing is stored.
    bool add(Passkey passkey);
    void remove(ByteView credentialId);

    /// Null if there is none. Valid until the store changes.
    Passkey* find(ByteView credentialId);

    /// All passkeys of one account, oldest first.
    std::vector<Passkey> of(std::string_view email) const;

    const std::map<Bytes, Passkey>& all() const { return passkeys; }

private:
    std::map<Bytes, Passkey> passkeys; ///< by credential id
};

} // namespace kelo::demo
