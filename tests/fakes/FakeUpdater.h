#pragma once

#include "platform/StandardUpdaterController.h"

namespace kelo::fakes {

class FakeUpdater final : public platform::StandardUpdaterController {
public:
    explicit FakeUpdater(int& checks) : checks(checks) {}
    void checkForUpdates() override { ++checks; }

private:
    int& checks;
};

} // namespace kelo::fakes
