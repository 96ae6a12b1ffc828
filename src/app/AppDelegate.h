#pragma once

#include "platform/Application.h"

namespace kelo::app {

/// Keeps the program running in the tray without a window until the user quits it.
class AppDelegate final : public platform::ApplicationDelegate {
public:
    bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }
};

} // namespace kelo::app
