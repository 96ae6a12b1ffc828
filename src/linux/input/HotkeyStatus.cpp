#include "linux/input/HotkeyStatus.h"

namespace kelo::desktop {

std::vector<SourceStatus> hotkeyStatus() {
    return {};
}

} // namespace kelo::desktop
