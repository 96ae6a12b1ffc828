#pragma once

#include "base/Failure.h"
#include "base/async/Continuation.h"
#include "linux/inventory/overview/PasskeyInventory.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelo::tests {

/// An inventory in memory. It answers in a later turn of the loop, as one does that reads a file.
class FakeInventory final : public inventory::PasskeyInventory {
public:
    Task<std::vector<inventory::ListedPasskey>> passkeys() override {
        ++reads;
        auto later = [this](CheckedContinuation<void> turn) { answerNowOrLater(std::move(turn)); };
        co_await withCheckedContinuation<void>(std::move(later));
        if (failure)
            throw Failure(FailureKind::storage, *failure);
        co_return all;
    }

    Task<std::vector<inventory::Finding>> findings() override {
        ++looks;
        auto later = [](CheckedContinuation<void> turn) { turn.resume(); };
        co_await withCheckedContinuation<void>(std::move(later));
        co_return found;
    }

    Task<inventory::DeletionResult> remove(inventory::ListedPasskey passkey,
                                           std::shared_ptr<platform::Window> above) override {
        asked.push_back(passkey.account);
        anchor = std::move(above);
        const UnderWay removal(*this);
        auto later = [this](CheckedContinuation<void> turn) { answer = std::move(turn); };
        co_await withCheckedContinuation<void>(std::move(later));
        if (failsToRemove)
            throw Failure(FailureKind::storage, "The disk is full.");
        if (result.isDeleted)
            std::erase(all, passkey);
        co_return result;
    }

    /// Adds one as it is registered: in software, never used and not yet accepted.
    inventory::ListedPasskey& add(const std::string& account) {
        inventory::ListedPasskey made;
        made.credentialId = Bytes(account.begin(), account.end());
        made.account = account;
        made.service = "assistant.example.com";
        made.made = std::chrono::sys_seconds(std::chrono::seconds(1'699'963'200));
        return all.emplace_back(std::move(made));
    }

    std::vector<inventory::ListedPasskey> all;
    std::vector<inventory::Finding> found;
    std::optional<std::string> failure;
    int reads = 0;
    int looks = 0;

    /// Keeps the answers to passkeys() until they are let go.
    bool holdsAnswers = false;
    std::vector<CheckedContinuation<void>> held;

    /// The accounts that a deletion was asked for.
    std::vector<std::string> asked;
    std::shared_ptr<platform::Window> anchor;
    /// Ends the deletion that is under way.
    std::optional<CheckedContinuation<void>> answer;
    inventory::DeletionResult result{true, "The passkey was deleted."};
    bool failsToRemove = false;
    int underWay = 0;

private:
    struct UnderWay {
        explicit UnderWay(FakeInventory& inventory) : inventory(inventory) { ++inventory.underWay; }
        UnderWay(const UnderWay&) = delete;
        UnderWay& operator=(const UnderWay&) = delete;
        ~UnderWay() { --inventory.underWay; }
        FakeInventory& inventory;
    };

    void answerNowOrLater(CheckedContinuation<void> turn) {
        if (holdsAnswers)
            held.push_back(std::move(turn));
        else
            turn.resume();
    }
};

} // namespace kelo::tests
