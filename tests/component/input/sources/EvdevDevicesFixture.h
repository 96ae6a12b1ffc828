#pragma once

#include "EmulatedDevices.h"

#include "component/ScopedMainLoop.h"
#include "linux/input/evdev/EvdevModifierSource.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelo {

inline EmulatedDevice keyboard() {
    return {.keys = {KEY_ESC, KEY_A, KEY_LEFTCTRL, KEY_LEFTALT, KEY_RIGHTCTRL, KEY_RIGHTALT}};
}

inline EmulatedDevice mouse() {
    return {.keys = {BTN_LEFT, BTN_RIGHT}};
}

/// Stands for another press in the list of what was heard. No modifier has this bit.
inline constexpr platform::ModifierFlags press = platform::ModifierFlags{1} << 60;

inline const EventBytes chordDown = down(KEY_LEFTCTRL) + report() + down(KEY_LEFTALT) + report();

/// A source of the hotkey with devices that umockdev emulates, and no login manager, unless a test
/// brings one to the system bus.
class EvdevDevices : public testing::Test {
protected:
    EvdevDevices() { g_setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere", TRUE); }

    input::EvdevDevices parts() {
        input::EvdevDevices all;
        all.session = [this](session::SeatSession::Changed changed) {
            auto followed = session::followSeatSession(std::move(changed));
            session = followed.get();
            return followed;
        };
        return all;
    }
    /// Waits until it is known whose session this is.
    bool start() {
        return source.start([this](platform::ModifierFlags flags) { heard.push_back(flags); }) &&
               ScopedMainLoop::runUntil([&] { return session->isCertain(); });
    }
    bool waitFor(std::size_t count) {
        return ScopedMainLoop::runUntil([&] { return heard.size() >= count; });
    }

    ScopedMainLoop loop;
    EmulatedDevices devices;
    /// That of the source once it is started.
    session::SeatSession* session = nullptr;
    input::EvdevModifierSource source{parts()};
    std::vector<platform::ModifierFlags> heard;
};

} // namespace kelo
