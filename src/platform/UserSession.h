#pragma once

#include "base/ObservableObject.h"

#include <functional>

namespace kelo::platform {

/// The login session that the program runs in. It counts as locked while a lock screen or a screen
/// saver is shown, while another session has the screen, and while another program keeps the
/// keyboard for itself, as lock screens do. Main thread only.
class UserSession {
public:
    virtual ~UserSession() = default;

    /// Runs the action unless the session is locked; a locked session drops it. Usually it runs or
    /// is dropped before the call returns. Where the answer is not certain at once, it is so up to
    /// a second later: the program has just started, or a key that belongs to a shortcut of the
    /// desktop's is still down. A later call replaces an action that still waits.
    virtual void performUnlessLocked(std::function<void()> action) = 0;

    /// Calls the handler each time the session locks while the observation exists. Where the
    /// desktop does not tell of it, the session is watched only while there is an observation, so
    /// keep one only while there is something to hide. The handler may end the observation.
    [[nodiscard]] virtual Observation observeLocking(std::function<void()> handler) = 0;
};

} // namespace kelo::platform
