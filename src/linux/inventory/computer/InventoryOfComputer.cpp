#include "linux/inventory/computer/InventoryOfComputer.h"

#include "linux/authorization/PasskeyFile.h"
#include "linux/authorization/verification/PamVerifier.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/inventory/OwnInventory.h"

namespace kelo::inventory {

namespace {

/// An inventory with what it works with.
struct ThisComputer {
    explicit ThisComputer(authenticator::PasskeySheetFactory& sheets)
        : inventory({authenticator::CredentialStore(authorization::passkeyFile()), verifier, sheets,
                     worker, slowWorker, lookAround}) {}

    authorization::PamVerifier verifier{authorization::verificationHelperPath()};
    gobject::WorkerThread worker;
    gobject::WorkerThread slowWorker;
    OwnInventory inventory;
};

} // namespace

std::shared_ptr<PasskeyInventory> inventoryOfComputer(authenticator::PasskeySheetFactory& sheets) {
    auto whole = std::make_shared<ThisComputer>(sheets);
    return {whole, &whole->inventory};
}

} // namespace kelo::inventory
