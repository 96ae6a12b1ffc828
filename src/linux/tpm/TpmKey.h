#pragma once

#include "authenticator/keys/SecretBytes.h"
#include "authenticator/webauthn/AttestedCredentialData.h"
#include "base/Bytes.h"
#include "linux/tpm/TpmConnection.h"

namespace kelo::tpm {

/// A signing key as it is kept outside the chip: what the chip alone can turn into a key again.
struct TpmKey {
    /// The name of the storage primary under which it was made (TPM 2.0 Library, Part 1, "Names"):
    /// it changes when the chip is cleared, and tells one chip from another.
    TPM2B_NAME parentName{};
    TPM2B_PUBLIC publicPart{};
    TPM2B_PRIVATE privatePart{};

    webauthn::PublicKey publicKey() const;
};

/// Throws a Failure of kind storage unless the chip answers and has the curve P-256.
void requireSuitableChip(const TpmConnection& chip);

/// Makes an ES256 key in the chip, under its storage primary. It cannot leave the chip and does
/// nothing but sign. authorization: what each signature then asks for, at most 32 bytes.
/// Blocks, up to some seconds. Throws a Failure of kind storage.
TpmKey makeKey(const TpmConnection& chip, const authenticator::SecretBytes& authorization);

/// Signs a 32-byte SHA-256 digest; the signature is a DER Ecdsa-Sig-Value. Blocks and throws like
/// makeKey().
Bytes signWith(const TpmConnection& chip, const TpmKey& key,
               const authenticator::SecretBytes& authorization, ByteView digest);

/// What is stored with the credential: a format version, the name of the parent, and both parts as
/// the chip writes them.
Bytes encode(const TpmKey& key);

/// Throws a Failure of kind storage for anything but what encode() has made.
TpmKey decodeKey(ByteView stored);

} // namespace kelo::tpm
