#include "linux/panel/DesktopPanels.h"

namespace kelo::desktop {

std::shared_ptr<platform::Panel> DesktopPanels::makePanel(platform::PanelDescription) {
    return nullptr;
}

std::optional<platform::Screen> DesktopPanels::mainScreen() const {
    return std::nullopt;
}

std::string panelStatus() {
    return {};
}

} // namespace kelo::desktop
