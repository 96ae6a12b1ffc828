#pragma once

#include "platform/EventMonitors.h"

namespace kelo::desktop {

/// The keyboard as the seam has it. GTK must be up before the first monitor is added.
class KeyboardMonitors final : public platform::EventMonitors {
public:
    std::shared_ptr<platform::EventMonitor> addGlobalMonitor(platform::EventMask matching,
                                                             GlobalHandler handler) override;
    std::shared_ptr<platform::EventMonitor> addLocalMonitor(platform::EventMask matching,
                                                            LocalHandler handler) override;
};

} // namespace kelo::desktop
