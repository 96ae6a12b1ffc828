#pragma once

#include "platform/Panel.h"

#include <memory>

namespace kelo::voice {

/// A panel that may have the keyboard although it has no title bar, and that the program's menus
/// never refer to. Otherwise an ordinary panel.
class KeyablePanel final {
public:
    static constexpr bool canBecomeKeyWindow = true;
    static constexpr bool canBecomeMainWindow = false;

    /// Creates the panel without showing it.
    explicit KeyablePanel(platform::PanelDescription description);

    platform::Panel* operator->() const { return panel.get(); }
    /// For comparing with an event's window.
    const std::shared_ptr<platform::Panel>& window() const { return panel; }

private:
    std::shared_ptr<platform::Panel> panel;
};

} // namespace kelo::voice
