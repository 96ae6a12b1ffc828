#include "linux/input/KeyboardMonitors.h"

namespace kelo::desktop {

std::shared_ptr<platform::EventMonitor> KeyboardMonitors::addGlobalMonitor(platform::EventMask,
                                                                           GlobalHandler) {
    return nullptr;
}

std::shared_ptr<platform::EventMonitor> KeyboardMonitors::addLocalMonitor(platform::EventMask,
                                                                          LocalHandler) {
    return nullptr;
}

} // namespace kelo::desktop
