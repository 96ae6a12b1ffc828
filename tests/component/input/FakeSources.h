#pragma once

#include "linux/input/source/KeyboardFocus.h"
#include "linux/input/source/ModifierSource.h"

#include <functional>
#include <string>
#include <utility>

namespace kelo::tests {

struct FakeFocus final : input::KeyboardFocus {
    bool isOurs() const override {
        ++asked;
        return ours;
    }
    void onChange(std::function<void()> wanted) override { changed = std::move(wanted); }
    void moveTo(bool toUs) {
        ours = toUs;
        changed();
    }
    std::function<void()> changed;
    bool ours = false;
    mutable int asked = 0;
};

struct FakeSource final : input::ModifierSource {
    FakeSource(bool works, bool starts, bool covers, Handler* tell, std::function<void()>* press)
        : works(works), starts(starts), covers(covers), tell(tell), press(press) {
        ++alive;
    }
    ~FakeSource() override { --alive; }
    FakeSource(const FakeSource&) = delete;
    FakeSource& operator=(const FakeSource&) = delete;
    static inline int alive = 0;
    std::string name() const override { return "fake"; }
    input::Availability availability() const override { return {works, "", ""}; }
    bool coversOwnWindows() const override { return covers; }
    bool start(Handler handler) override {
        *tell = std::move(handler);
        return starts;
    }
    void onOtherPress(std::function<void()> handler) override { *press = std::move(handler); }
    /// Says that it can be used; can be used.
    bool works;
    bool starts;
    bool covers;
    Handler* tell;
    std::function<void()>* press;
};

} // namespace kelo::tests
