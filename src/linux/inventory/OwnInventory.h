#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "authenticator/consent/UserVerifier.h"
#include "authenticator/store/CredentialStore.h"
#include "base/async/Worker.h"
#include "linux/inventory/Doctor.h"
#include "linux/inventory/overview/PasskeyInventory.h"

#include <functional>
#include <memory>
#include <stop_token>

namespace kelo::inventory {

/// What an inventory works with. All references must outlive it.
struct InventoryParts {
    authenticator::CredentialStore passkeys;
    authenticator::UserVerifier& verifier;
    authenticator::PasskeySheetFactory& sheets;
    /// Reads and writes the file.
    Worker& worker;
    /// Looks around, which may take long, so that the list does not wait for it.
    Worker& slowWorker;
    /// Ends early when it is stopped; what it then returns is not used. On the slow worker.
    std::function<Surroundings(std::stop_token)> lookAround;
};

/// The passkeys of one file.
class OwnInventory final : public PasskeyInventory {
public:
    explicit OwnInventory(InventoryParts parts) : parts(std::move(parts)) {}

    Task<std::vector<ListedPasskey>> passkeys() override;
    Task<std::vector<Finding>> findings() override;
    /// A passkey that is gone already, because another program has deleted it, is no failure: the
    /// result says so, and nobody is asked or verified.
    Task<DeletionResult> remove(ListedPasskey passkey,
                                std::shared_ptr<platform::Window> anchor) override;

private:
    InventoryParts parts;
};

} // namespace kelo::inventory
