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
    FakeSource(bool works, bool covers, Handler* tell, std::function<void()>* press)
        : works(works), covers(covers), tell(tell), press(press) {
        ++alive;
    }
    ~FakeSource() override { --alive; }
    FakeSource(const FakeSource&) = delete;
    FakeSource& operator=(const FakeSource&) = delete;
    static inline int alive = 0;
    static inline int askedWhetherAvailable = 0;
    std::string name() const override { return "fake"; }
    input::Availability availability() const override {
        ++askedWhetherAvailable;
        return {works, "", ""};
    }
    bool coversOwnWindows() const override { return covers; }
    bool start(Handler handler) override {
        *tell = std::move(handler);
        return works;
    }
    void onOtherPress(std::function<void()> handler) override { *press = std::move(handler); }
    /// Whether it starts.
    bool works;
    bool covers;
    Handler* tell;
    std::function<void()>* press;
};

} // namespace kelo::tests
