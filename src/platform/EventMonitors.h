#pragma once

#include "platform/Window.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace kelo::platform {

/// A set of modifier keys, by the bits below; bits without a name may be set, too.
using ModifierFlags = std::uint64_t;

namespace modifier {
inline constexpr ModifierFlags capsLock = 0x10000;
inline constexpr ModifierFlags shift = 0x20000;
inline constexpr ModifierFlags control = 0x40000;
/// Alt on a PC keyboard, left or right; never AltGr.
inline constexpr ModifierFlags option = 0x80000;
/// The key with the desktop's own sign on it.
inline constexpr ModifierFlags command = 0x100000;
} // namespace modifier

/// Keys by the numbers that the system knows them by, whatever the keyboard calls them.
using KeyCode = std::uint16_t;

namespace key {
inline constexpr KeyCode escape = 53;
/// Every key that the system has no number for.
inline constexpr KeyCode other = 0xFFFF;
} // namespace key

/// Kinds of events; a mask may hold several.
using EventMask = std::uint64_t;

namespace event_mask {
inline constexpr EventMask keyDown = 0x400;
inline constexpr EventMask flagsChanged = 0x1000;
} // namespace event_mask

struct Event {
    /// One bit of EventMask.
    EventMask kind = 0;
    /// The modifiers that are down after the event.
    ModifierFlags modifierFlags = 0;
    /// Of a key-down event.
    KeyCode keyCode = key::other;
    /// The window of ours that the event is addressed to; null for none that the system knows.
    std::shared_ptr<const Window> window = nullptr;
};

using EventPointer = std::shared_ptr<const Event>;

/// Stands for an installed monitor. It cannot do anything, and dropping it removes nothing: a
/// monitor stays for the life of the process.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;
};

/// Lets the system see input without taking it. Main thread only, handlers included. A desktop that
/// has no way to see what is asked for gives no monitor: null.
///
/// A change of the modifiers comes to the global monitors or to the local ones, never to both.
class EventMonitors {
public:
    using GlobalHandler = std::function<void(const Event&)>;
    /// Returns the event that goes on to the window: the one received, or null for none, so that
    /// neither the window nor a later monitor sees it. Changes of the modifiers go on in any case.
    using LocalHandler = std::function<EventPointer(const EventPointer&)>;

    virtual ~EventMonitors() = default;

    /// For events addressed to other programs. Only flagsChanged is offered.
    virtual std::shared_ptr<EventMonitor> addGlobalMonitor(EventMask matching,
                                                           GlobalHandler handler) = 0;
    /// For events addressed to a window of ours. Handlers are called in the order added.
    virtual std::shared_ptr<EventMonitor> addLocalMonitor(EventMask matching,
                                                          LocalHandler handler) = 0;
};

} // namespace kelo::platform
