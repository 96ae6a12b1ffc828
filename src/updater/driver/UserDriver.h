#pragma once

#include "base/async/Task.h"
#include "updater/driver/ReleaseNotes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kelo::updater {

/// Who asked for a check: that decides whether windows may take the focus.
enum class CheckKind {
    userInitiated, ///< windows come to the front
    scheduled,     ///< windows never take the focus from what the user is at
};

/// A newer version, as the user is asked about it.
struct UpdateOffer {
    std::string programName;
    std::string installedVersion;
    std::string offeredVersion;
    ReleaseNotes releaseNotes; ///< empty when there are none
    /// Nothing can be installed here; "Install Update" becomes "Learn More…" and opens a link.
    bool informationalOnly = false;
    /// Must not be skipped or put off by the window's own buttons.
    bool critical = false;
};

enum class UpdateChoice { skipThisVersion, remindLater, install };

enum class RelaunchChoice { installAndRelaunch, later };

struct DownloadProgress {
    std::uint64_t received = 0;
    std::optional<std::uint64_t> expected; ///< nothing when the server does not say
};

/// The updater's windows: only user interface, no decision. One window at a time: each show… takes
/// the place of what was shown before. Closing a window is its mildest answer: cancel, later,
/// acknowledged, don't check. Main thread only.
class UserDriver {
public:
    virtual ~UserDriver() = default;

    /// Checking, with "Cancel". cancel is run at most once.
    virtual void showChecking(std::function<void()> cancel) = 0;
    /// Ends when the user has answered. A scheduled offer appears without taking the focus.
    virtual Task<UpdateChoice> showOffer(UpdateOffer offer, CheckKind kind) = 0;
    /// Downloading, with sizes and "Cancel". May be called often; later calls only move the bar.
    virtual void showDownload(DownloadProgress progress, std::function<void()> cancel) = 0;
    /// Checking the signature, unpacking, putting in place: short, and not to be cancelled.
    virtual void showPreparing() = 0;
    virtual Task<RelaunchChoice> showReadyToRelaunch(UpdateOffer offer) = 0;
    /// "You're up to date!" and the like: a heading and a sentence, with one button.
    virtual Task<void> showMessage(std::string heading, std::string sentence) = 0;
    /// What went wrong, in one sentence with what to do.
    virtual Task<void> showFailure(std::string sentence) = 0;
    /// Whether to check automatically from now on.
    virtual Task<bool> askForAutomaticChecks(std::string programName) = 0;

    /// Brings what is shown to the front; false when nothing is.
    virtual bool bringToFront() = 0;
    /// Takes away what is shown. A question that is open gets its mildest answer.
    virtual void dismiss() = 0;
};

} // namespace kelo::updater
