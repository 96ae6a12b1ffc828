#pragma once

#include "platform/Panel.h"
#include "platform/Screen.h"

#include <memory>
#include <optional>
#include <string>

namespace kelo::panel {

/// Creates panels and finds the main screen on the display that GTK is connected to. Both functions
/// return nothing if no display can be opened. Main thread only.
class DesktopPanels {
public:
    std::shared_ptr<platform::Panel> makePanel(platform::PanelDescription description);
    std::optional<platform::Screen> mainScreen() const;
};

/// One sentence for the user that says how this desktop shows the voice panel. Needs no window.
std::string panelStatus();

} // namespace kelo::panel
