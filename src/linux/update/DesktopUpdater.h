#pragma once

#include "platform/Bundle.h"
#include "platform/StandardUpdaterController.h"

#include <memory>

namespace kelo::desktop {

/// Makes and starts the updater of this program on this desktop. The bundle must outlive it.
std::unique_ptr<platform::StandardUpdaterController>
makeStandardUpdaterController(platform::Bundle& bundle);

} // namespace kelo::desktop
