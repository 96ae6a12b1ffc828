#pragma once

#include "base/Bytes.h"
#include "base/async/Task.h"
#include "linux/inventory/overview/Finding.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::platform {
class Window;
}

namespace kelo::inventory {

/// A passkey as its owner sees it.
struct ListedPasskey {
    Bytes credentialId;
    /// As the service has written it, and so not yet fit to be shown (base/ShownText.h).
    std::string account;
    std::string service;
    std::chrono::sys_seconds made;
    /// Nothing if never, or not since this is noted.
    std::optional<std::chrono::sys_seconds> lastUsed;
    /// In the computer's security chip; otherwise in software.
    bool isInChip = false;
    /// Whether the service has ever accepted it.
    bool isAccepted = false;

    friend bool operator==(const ListedPasskey&, const ListedPasskey&) = default;
};

/// How an attempt to delete a passkey has ended.
struct DeletionResult {
    bool isDeleted = false;
    std::string sentence; ///< for the user
};

/// The passkeys of this user on this computer, for a window that shows them to their owner. Each
/// task may be destroyed at any time. Main thread only; what blocks runs elsewhere.
class PasskeyInventory {
public:
    virtual ~PasskeyInventory() = default;

    /// All of them, the last made first. Throws a Failure of kind storage.
    virtual Task<std::vector<ListedPasskey>> passkeys() = 0;

    /// What could be better or does not work of what passkeys need here. Says nothing of their
    /// file, because passkeys() does. Takes up to some seconds, asks the user nothing and does not
    /// throw.
    virtual Task<std::vector<Finding>> findings() = 0;

    /// Deletes a passkey, once its owner has agreed to it and is verified, both on a passkey sheet
    /// above the anchor. Throws a Failure of kind storage. Destroying the task closes the sheet;
    /// what has begun in the file then still comes to its end.
    virtual Task<DeletionResult> remove(ListedPasskey passkey,
                                        std::shared_ptr<platform::Window> anchor) = 0;
};

} // namespace kelo::inventory
