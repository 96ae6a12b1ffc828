#pragma once

#include "platform/Window.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace kelo::platform {

/// A set of modifier keys, made of the bits below. Other bits may be set, too.
using ModifierFlags = std::uint64_t;

namespace modifier {
inline constexpr ModifierFlags capsLock = 0x10000;
inline constexpr ModifierFlags shift = 0x20000;
inline constexpr ModifierFlags control = 0x40000;
/// Alt on a PC keyboard, left or right; never AltGr.
inline constexpr ModifierFlags option = 0x80000;
/// The Super key, which often carries a logo.
inline constexpr ModifierFlags command = 0x100000;
} // namespace modifier

/// A number for a key. It does not depend on the keyboard.
using KeyCode = std::uint16_t;

namespace key {
inline constexpr KeyCode escape = 53;
/// Any key without a number of its own.
inline constexpr KeyCode other = 0xFFFF;
} // namespace key

/// A set of event kinds, made of the bits below.
using EventMask = std::uint64_t;

namespace event_mask {
inline constexpr EventMask keyDown = 0x400;
inline constexpr EventMask flagsChanged = 0x1000;
/// A mouse button, or a key other than a modifier, goes down while Control and Option are both
/// down, or these were never released: their keyboard is gone, or the session has left the screen.
/// The event says that it happened, but not which button or key it was. Desktops report what they
/// can learn: some report keys only, some report nothing.
inline constexpr EventMask otherPress = 0x1000000000000;
} // namespace event_mask

struct Event {
    /// Exactly one bit of event_mask.
    EventMask kind = 0;
    /// The modifiers that are down after the event.
    ModifierFlags modifierFlags = 0;
    /// Set for key-down events only.
    KeyCode keyCode = key::other;
    /// The window of this program that receives the event. Null if it is not one that a caller of
    /// the seam has made.
    std::shared_ptr<const Window> window = nullptr;
};

using EventPointer = std::shared_ptr<const Event>;

/// A token for an installed monitor. Destroying it does not remove the monitor, which stays for the
/// life of the process.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;
};

/// Observes keyboard input. Main thread only; handlers are called there, too. Both functions return
/// null if the desktop cannot observe such events. A desktop that has to be asked first may turn
/// out later not to: then the monitor is never called. Neither function waits for that.
///
/// A change of the modifiers goes either to the global monitors or to the local ones, never to
/// both. So does another press.
class EventMonitors {
public:
    using GlobalHandler = std::function<void(const Event&)>;
    /// Returns the event to pass it on, or null to consume it: then neither the window nor a later
    /// monitor sees it. Only key-down events can be consumed.
    using LocalHandler = std::function<EventPointer(const EventPointer&)>;

    virtual ~EventMonitors() = default;

    /// Observes events that go to other programs. Supports flagsChanged and otherPress only.
    virtual std::shared_ptr<EventMonitor> addGlobalMonitor(EventMask matching,
                                                           GlobalHandler handler) = 0;
    /// Observes events that go to windows of this program. Handlers are called in the order in
    /// which they were added.
    virtual std::shared_ptr<EventMonitor> addLocalMonitor(EventMask matching,
                                                          LocalHandler handler) = 0;
};

} // namespace kelo::platform
