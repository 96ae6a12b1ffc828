#include "linux/inventory/OwnInventory.h"

#include "base/Translation.h"
#include "base/async/StopWhenDropped.h"
#include "linux/inventory/Deletion.h"

#include <algorithm>
#include <utility>

namespace kelo::inventory {

namespace {

using authenticator::CredentialRecord;
using authenticator::VerificationOutcome;

ListedPasskey listed(const CredentialRecord& record) {
    return {
        record.credentialId, record.accountName, record.relyingPartyIdentifier,
        record.created,      record.lastUsed,    record.keeper == authenticator::KeyKeeper::chip,
        record.accepted};
}

bool isToBeSaid(const Finding& finding) {
    return finding.state != Finding::State::good && finding.name != "passkeys";
}

} // namespace

Task<std::vector<ListedPasskey>> OwnInventory::passkeys() {
    auto job = [store = parts.passkeys] {
        std::vector<ListedPasskey> all;
        std::ranges::transform(store.all(), std::back_inserter(all), listed);
        return all;
    };
    co_return co_await onWorker(parts.worker, std::move(job));
}

Task<std::vector<Finding>> OwnInventory::findings() {
    const StopWhenDropped stop;
    auto job = [lookAround = parts.lookAround, stop = stop.token()] {
        std::vector<Finding> found = diagnose(lookAround(stop));
        std::erase_if(found, std::not_fn(isToBeSaid));
        return found;
    };
    co_return co_await onWorker(parts.slowWorker, std::move(job));
}

Task<DeletionResult> OwnInventory::remove(ListedPasskey passkey,
                                          std::shared_ptr<platform::Window> anchor) {
    auto look = [store = parts.passkeys, wanted = passkey.credentialId] {
        return std::ranges::count(store.all(), wanted, &CredentialRecord::credentialId) > 0;
    };
    const bool isThere = co_await onWorker(parts.worker, std::move(look));
    if (!isThere)
        co_return DeletionResult{false, translated("This passkey is no longer on this computer.")};
    const auto sheet = parts.sheets.makeSheet(std::move(anchor));
    authenticator::ConsentRequest request;
    request.ceremony = authenticator::Ceremony::deletion;
    request.relyingPartyIdentifier = passkey.service;
    request.warning = deletionWarning(passkey.account, passkey.service);
    const auto agreed = co_await sheet->confirm(std::move(request));
    if (!agreed)
        co_return DeletionResult{false, nothingDeleted()};
    const VerificationOutcome outcome = co_await parts.verifier.verify(*sheet);
    if (outcome != VerificationOutcome::verified)
        co_return DeletionResult{false, refusalFor(outcome)};
    auto job = [store = parts.passkeys, passkey] { store.remove(passkey.credentialId); };
    co_await onWorker(parts.worker, std::move(job));
    co_return DeletionResult{true, passkeyDeleted()};
}

} // namespace kelo::inventory
