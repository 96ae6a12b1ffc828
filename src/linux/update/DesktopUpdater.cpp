#include "linux/update/DesktopUpdater.h"

namespace kelo::desktop {

namespace {

struct NoUpdater final : platform::StandardUpdaterController {
    void checkForUpdates() override {}
};

} // namespace

std::unique_ptr<platform::StandardUpdaterController>
makeStandardUpdaterController(platform::Bundle&) {
    return std::make_unique<NoUpdater>();
}

} // namespace kelo::desktop
