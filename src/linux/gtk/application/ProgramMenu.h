#pragma once

#include "platform/SceneGraph.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelo::gtk {

/// Whether the program starts when its user logs in. Main thread only.
struct LoginStart {
    std::function<bool()> isOn;
    std::function<void(bool on)> setOn;
    /// Notifies before isOn() changes.
    std::shared_ptr<ObservableObject> observed;
};

/// What the menu with the program's name does.
struct ProgramMenuActions {
    /// Empty if the program has no settings.
    std::function<void()> openSettings;
    /// Empty if pages can be allowed nothing.
    std::function<void()> openPermissions;
    /// Empty if there is no list of passkeys to be shown.
    std::function<void()> openPasskeys;
    std::function<void()> openShortcuts;
    std::function<void()> openAbout;
    std::optional<LoginStart> loginStart;
    std::function<void()> closeWindow;
    std::function<void()> quit;
};

/// The menu with the program's name, first in the main menu.
platform::CommandMenu programMenu(const ProgramMenuActions& actions);

} // namespace kelo::gtk
