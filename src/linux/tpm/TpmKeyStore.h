#pragma once

#include "authenticator/keys/KeyStores.h"
#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"
#include "base/async/Worker.h"

#include <memory>
#include <optional>
#include <string>

namespace kelo::tpm {

/// The chip that computers have for this, as the library's loader names it.
inline constexpr const char* chipOfThisComputer = "device:/dev/tpmrm0";

/// Why passkeys' keys cannot be made in the chip; nothing if they can. Blocks for up to a second.
std::optional<Failure> chipTrouble(const std::string& chip);

/// A key store in the computer's security chip (TPM 2.0). A key is made and used inside the chip
/// and cannot leave it. Each signature asks for a value that the user's keyring guards, so what is
/// on disk is of no use to who has only the computer, or only the disk.
class TpmKeyStore final : public authenticator::ChipKeyStore {
public:
    /// The worker must outlive the store. The source is used on the worker only.
    TpmKeyStore(std::string chip, std::shared_ptr<authenticator::WrappingKeySource> source,
                Worker& worker);

    Task<bool> answers() override;
    Task<authenticator::CreatedKey> create() override;
    Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) override;

private:
    std::string chip;
    std::shared_ptr<authenticator::WrappingKeySource> source;
    Worker& worker;
};

} // namespace kelo::tpm
