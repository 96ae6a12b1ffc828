#pragma once

#include "testing/rig/AccessibleTree.h"
#include "testing/rig/Screen.h"

#include <string>

namespace kelo::rig {

/// The desktop that scripts/private-desktop has set up around this process: an X server, a window
/// manager, a session bus with an unlocked keyring, and a login password known to PAM, all of them
/// for this process alone.
class PrivateDesktop {
public:
    /// Waits until the desktop is ready. Throws std::runtime_error on any other desktop, so that no
    /// test ever types into a real user's windows.
    PrivateDesktop();

    /// The login password that PAM accepts on this desktop.
    const std::string loginPassword;
    const AccessibilityBus bus;
    AccessibleTree tree;
    const Screen screen;
};

} // namespace kelo::rig
