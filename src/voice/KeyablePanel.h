#pragma once

#include "platform/Panel.h"

#include <memory>

namespace kelo::voice {

/// A panel that may have the keyboard although it has no title bar, and that the program's menus
/// never refer to. It adds that to a panel's description and is a panel otherwise.
class KeyablePanel final {
public:
    static constexpr bool canBecomeKeyWindow = true;
    static constexpr bool canBecomeMainWindow = false;

    /// Makes the panel; nothing is shown yet.
    explicit KeyablePanel(platform::PanelDescription description);

    platform::Panel* operator->() const { return panel.get(); }
    /// What an event's window is compared with.
    const std::shared_ptr<platform::Panel>& window() const { return panel; }

private:
    std::shared_ptr<platform::Panel> panel;
};

} // namespace kelo::voice
