#pragma once

#include "FakeKeyboards.h"

#include "component/ScopedMainLoop.h"
#include "linux/input/evdev/EvdevModifierSource.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace kelo {

inline constexpr platform::ModifierFlags chord =
    platform::modifier::control | platform::modifier::option;
/// Stands for another press in the list of what was heard. No modifier has this bit.
inline constexpr platform::ModifierFlags press = platform::ModifierFlags{1} << 60;

inline const EventBytes chordDown = down(KEY_LEFTCTRL) + report() + down(KEY_LEFTALT) + report();
inline const EventBytes chordUp = up(KEY_LEFTALT) + report() + up(KEY_LEFTCTRL) + report();

/// A source of the hotkey with keyboards that a test makes up, which is asked for other presses,
/// too.
class EvdevFixture : public testing::Test {
protected:
    bool start() {
        source = std::make_unique<input::EvdevModifierSource>(keyboards.devices());
        source->onOtherPress([this] { heard.push_back(press); });
        return source->start([this](platform::ModifierFlags flags) { heard.push_back(flags); });
    }
    bool waitFor(std::size_t count) {
        return ScopedMainLoop::runUntil([&] { return heard.size() >= count; });
    }
    bool waitUntilOpen(int count) {
        return ScopedMainLoop::runUntil([&] { return keyboards.openNow == count; });
    }
    /// Types the chord as the kernel does: whoever asks it is told what is down, too.
    bool holdChord(FakeKeyboard& keyboard) {
        keyboard.held = {.leftControl = true, .leftAlt = true};
        const std::size_t before = heard.size();
        return keyboard.type(down(KEY_LEFTCTRL) + down(KEY_LEFTALT) + report()) &&
               waitFor(before + 1);
    }
    /// Runs what the main loop has to run now.
    static void settle() {
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }
    input::Availability availability() {
        return input::EvdevModifierSource(keyboards.devices()).availability();
    }

    ScopedMainLoop loop;
    FakeKeyboards keyboards;
    std::unique_ptr<input::EvdevModifierSource> source;
    std::vector<platform::ModifierFlags> heard;
};

} // namespace kelo
