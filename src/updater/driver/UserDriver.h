#pragma once

#include "base/async/Task.h"
#include "updater/driver/ReleaseNotes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kelo::updater {

/// Who asked for a check. This decides whether windows may take the focus.
enum class CheckKind {
    userInitiated, ///< windows come to the front
    scheduled,     ///< windows never take the focus
};

/// What the user is told about a newer version.
struct UpdateOffer {
    std::string programName;
    std::string installedVersion;
    std::string offeredVersion;
    ReleaseNotes releaseNotes; ///< may be empty
    /// Nothing can be installed on this computer; "Install Update" becomes "Learn More…" and opens
    /// a link.
    bool informationalOnly = false;
    /// What the user can do about that, as a sentence; may be empty.
    std::string obstacle = {};
    /// The window has no buttons to skip or postpone it.
    bool critical = false;
};

enum class UpdateChoice { skipThisVersion, remindLater, install };

enum class RelaunchChoice { installAndRelaunch, later };

struct DownloadProgress {
    std::uint64_t received = 0;
    std::optional<std::uint64_t> expected; ///< nothing: unknown
};

/// The updater's user interface; it decides nothing. There is one window at a time: each call that
/// shows something replaces what was shown before. Closing a window gives its default answer:
/// cancel, remind later, acknowledged, don't check. Main thread only.
class UserDriver {
public:
    virtual ~UserDriver() = default;

    /// Shows that a check is running, with "Cancel". Calls cancel at most once.
    virtual void showChecking(std::function<void()> cancel) = 0;
    /// Asks the user about an update. A scheduled offer does not take the focus.
    virtual Task<UpdateChoice> showOffer(UpdateOffer offer, CheckKind kind) = 0;
    /// Shows the download's progress, with sizes and "Cancel". Repeated calls update the window.
    virtual void showDownload(DownloadProgress progress, std::function<void()> cancel) = 0;
    /// Shows that the update is being verified, unpacked or installed. It cannot be cancelled.
    virtual void showPreparing() = 0;
    /// Asks whether to install the staged update now.
    virtual Task<RelaunchChoice> showReadyToRelaunch(UpdateOffer offer) = 0;
    /// Shows a message ("You're up to date!") with one button; ends when the user closes it.
    virtual Task<void> showMessage(std::string heading, std::string sentence) = 0;
    /// Shows one sentence that says what failed and what to do; ends when the user closes it.
    virtual Task<void> showFailure(std::string sentence) = 0;
    /// Asks whether to check automatically from now on.
    virtual Task<bool> askForAutomaticChecks(std::string programName) = 0;

    /// Brings the window to the front; false if there is none.
    virtual bool bringToFront() = 0;
    /// Closes the window. An open question gets its default answer.
    virtual void dismiss() = 0;
};

} // namespace kelo::updater
