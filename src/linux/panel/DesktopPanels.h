#pragma once

#include "platform/Panel.h"
#include "platform/Screen.h"

#include <memory>
#include <optional>
#include <string>

namespace kelo::panel {

/// Panels and screens of the display that GTK is connected to. Main thread only.
class DesktopPanels {
public:
    std::shared_ptr<platform::Panel> makePanel(platform::PanelDescription description);
    std::optional<platform::Screen> mainScreen() const;
};

/// How the voice panel can be shown on this desktop, in one sentence for its user. Needs no window.
std::string panelStatus();

} // namespace kelo::panel
