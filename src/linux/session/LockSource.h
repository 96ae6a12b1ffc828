#pragma once

#include <functional>

namespace kelo::session {

/// A service that tells whether the session is locked. Main thread only.
class LockSource {
public:
    /// Called after each change of an answer below.
    using Changed = std::function<void()>;

    virtual ~LockSource() = default;

    /// False until the service has said how things stand. True if there is no such service.
    virtual bool isCertain() const = 0;
    /// False while that is not certain.
    virtual bool isLocked() const = 0;
};

/// What the screen itself tells of lock screens that inform no service. Each question is answered
/// at once. Main thread only.
class LockScreenProbe {
public:
    virtual ~LockScreenProbe() = default;

    /// Whether another program keeps the keyboard for itself. Lock screens do so all the time, but
    /// so do menus while they are open, and window managers while a key of theirs is down.
    virtual bool isKeyboardGrabbed() = 0;
    /// Whether the window of another program that covers a whole monitor lies above ours.
    virtual bool isMonitorCovered() = 0;
};

} // namespace kelo::session
