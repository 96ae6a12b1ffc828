#pragma once

#include "base/async/MainLoop.h"

namespace kelo::gobject {

/// The default GLib main context. Posted jobs run in their order, before drawing and idle work.
class GLibMainLoop final : public MainLoop {
public:
    void post(std::function<void()> job) override;
    std::shared_ptr<Timer> scheduleTimer(std::chrono::duration<double> delay,
                                         std::function<void()> action) override;
};

} // namespace kelo::gobject
