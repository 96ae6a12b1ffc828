#pragma once

#include "platform/EventMonitors.h"

#include <functional>
#include <string>

namespace kelo::input {

/// Whether something of this desktop can be used, in words for its user.
struct Availability {
    bool available = false;
    /// What it does for the user; when it is not available, why not. One sentence.
    std::string reason;
    /// What the user can do about it; empty when there is nothing to do.
    std::string advice;
};

/// One way to learn which modifier keys are down. Main thread only.
class ModifierSource {
public:
    /// Gets all the modifiers that are down after a change, whoever has the keyboard focus.
    using Handler = std::function<void(platform::ModifierFlags)>;

    virtual ~ModifierSource() = default;

    /// As --hotkey-status shows it: "X11", "evdev".
    virtual std::string name() const = 0;
    /// May look at the system anew at each call; quick, and changes nothing.
    virtual Availability availability() const = 0;
    bool isAvailable() const { return availability().available; }
    /// Whether it is also the one to believe while a window of ours has the focus; otherwise what
    /// the toolkit tells those windows counts meanwhile.
    virtual bool coversOwnWindows() const = 0;

    /// Begins to watch, once; false when it cannot. The handler is held until the source goes, and
    /// is never called from within start().
    virtual bool start(Handler handler) = 0;
};

} // namespace kelo::input
