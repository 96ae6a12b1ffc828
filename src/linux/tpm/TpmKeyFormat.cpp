#include "linux/tpm/TpmKey.h"

#include "linux/tpm/TpmResult.h"

#include "base/Translation.h"

#include <tss2/tss2_mu.h>

namespace kelo::tpm {

namespace {

constexpr std::uint8_t formatVersion = 1;

[[noreturn]] void damaged(const char* cause) {
    throw Failure(
        FailureKind::storage,
        translated("This passkey is damaged on disk and cannot be used. Sign in another way, then "
                   "register a new passkey from the Account menu."),
        cause);
}

void requireWhole(TSS2_RC result) {
    if (result != TSS2_RC_SUCCESS)
        damaged("a part of a key of the chip cannot be read");
}

} // namespace

Bytes encode(const TpmKey& key) {
    Bytes bytes(1 + sizeof key.parentName + sizeof key.publicPart + sizeof key.privatePart);
    bytes[0] = formatVersion;
    std::size_t at = 1;
    require(Tss2_MU_TPM2B_NAME_Marshal(&key.parentName, bytes.data(), bytes.size(), &at),
            "writing the parent's name");
    require(Tss2_MU_TPM2B_PUBLIC_Marshal(&key.publicPart, bytes.data(), bytes.size(), &at),
            "writing the public part");
    require(Tss2_MU_TPM2B_PRIVATE_Marshal(&key.privatePart, bytes.data(), bytes.size(), &at),
            "writing the private part");
    bytes.resize(at);
    return bytes;
}

TpmKey decodeKey(ByteView stored) {
    if (stored.empty() || stored[0] != formatVersion)
        damaged("a key of the chip has another format");
    TpmKey key;
    std::size_t at = 1;
    requireWhole(Tss2_MU_TPM2B_NAME_Unmarshal(stored.data(), stored.size(), &at, &key.parentName));
    requireWhole(
        Tss2_MU_TPM2B_PUBLIC_Unmarshal(stored.data(), stored.size(), &at, &key.publicPart));
    requireWhole(
        Tss2_MU_TPM2B_PRIVATE_Unmarshal(stored.data(), stored.size(), &at, &key.privatePart));
    if (at != stored.size())
        damaged("a key of the chip is followed by something");
    return key;
}

} // namespace kelo::tpm
