#pragma once

#include "platform/MainLoop.h"

namespace kelo::desktop {

/// The default GLib main context. Posted jobs run before drawing and idle work, in their order.
class GLibMainLoop final : public platform::MainLoop {
public:
    void post(std::function<void()> job) override;
    std::shared_ptr<platform::Timer> scheduleTimer(std::chrono::duration<double> delay,
                                                   std::function<void()> action) override;
};

} // namespace kelo::desktop
