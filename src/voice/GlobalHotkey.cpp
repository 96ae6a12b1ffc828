#include "voice/GlobalHotkey.h"

#include "log/DebugLog.h"
#include "platform/Desktop.h"

#include <string>

namespace kelo::voice {

using platform::Event;
using platform::EventPointer;
using platform::ModifierFlags;

namespace {

std::string asText(bool value) {
    return value ? "true" : "false";
}

} // namespace

void GlobalHotkey::start() {
    namespace event_mask = platform::event_mask;
    auto& monitors = platform::Desktop::current().eventMonitors();
    const auto handle = [weak = weak_from_this()](const Event& event) {
        const auto self = weak.lock();
        if (self && event.kind == event_mask::flagsChanged)
            self->handleFlagsChanged(event.modifierFlags);
        else if (self && event.kind == event_mask::otherPress)
            self->handleOtherPress();
    };
    constexpr platform::EventMask matching = event_mask::flagsChanged | event_mask::otherPress;
    globalMonitor = monitors.addGlobalMonitor(matching, handle);
    localMonitor = monitors.addLocalMonitor(matching, [handle](const EventPointer& event) {
        handle(*event);
        return event;
    });
    log::debugLog("hotkey.start global=" + asText(globalMonitor != nullptr) +
                  " local=" + asText(localMonitor != nullptr));
}

void GlobalHotkey::handleFlagsChanged(ModifierFlags flags) {
    const bool down = (flags & required) == required;
    if (down && !active)
        pressed();
    else if (!down && active)
        released();
}

// A hold that has begun ends as usual: onHoldStart has run, and its counterpart must follow.
void GlobalHotkey::handleOtherPress() {
    if (!active || didHold)
        return;
    dropped = true;
    cancelTimer();
}

void GlobalHotkey::pressed() {
    active = true;
    didHold = false;
    dropped = false;
    cancelTimer();
    holdTimer = MainLoop::main().scheduleTimer(holdThreshold, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->holdTimerFired();
    });
}

void GlobalHotkey::released() {
    active = false;
    cancelTimer();
    if (dropped)
        return;
    // A copy, because an action may replace itself.
    const Action action = didHold ? onHoldEnd : onTap;
    action();
}

void GlobalHotkey::holdTimerFired() {
    if (!active || dropped)
        return;
    didHold = true;
    const Action action = onHoldStart;
    action();
}

void GlobalHotkey::cancelTimer() {
    if (holdTimer)
        holdTimer->invalidate();
    holdTimer.reset();
}

} // namespace kelo::voice
