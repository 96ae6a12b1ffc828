#pragma once

#include "platform/EventMonitors.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::input {

/// Whether a source can be used on this desktop, in words for the user.
struct Availability {
    bool available = false;
    /// What it does for the user and what it learns of other keys or, if it is not available, why
    /// not. One or two sentences.
    std::string reason;
    /// What the user can do; empty if there is nothing to do.
    std::string advice;
};

/// Reports which modifier keys are down. Main thread only.
class ModifierSource {
public:
    /// Receives all modifiers that are down after a change, whichever window has the keyboard.
    using Handler = std::function<void(platform::ModifierFlags)>;

    virtual ~ModifierSource() = default;

    /// As --hotkey-status shows it: "X11", "evdev".
    virtual std::string name() const = 0;
    /// Checks the system at each call, without side effects. For reports: it may wait several
    /// seconds for another program.
    virtual Availability availability() const = 0;
    bool isAvailable() const { return availability().available; }
    /// Whether this source also counts while a window of ours has the keyboard. Otherwise, the
    /// toolkit's events count then.
    virtual bool coversOwnWindows() const = 0;

    /// Starts the source; call it once. Never waits for another program, so true does not mean that
    /// there will be anything to report. Returns false on failure. The handler is kept until the
    /// destructor and is never called from within start().
    virtual bool start(Handler handler) = 0;

    /// Sets the function that is called when a key other than a modifier, or a mouse button, goes
    /// down. It is called at least while Control and Option are both down, for what the source can
    /// see of such presses; at other times, it may be called, too. Also called before the handler
    /// learns that modifiers are not down any more which nobody has released, because what they
    /// were seen by is gone. Call it before start(). Kept until the destructor.
    virtual void onOtherPress(std::function<void()>) {}
};

using SourceList = std::vector<std::unique_ptr<ModifierSource>>;

} // namespace kelo::input
