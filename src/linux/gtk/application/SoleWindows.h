#pragma once

#include "linux/gtk/kit/ProgramWindow.h"
#include "linux/gtk/windows/ShortcutsWindow.h"
#include "linux/inventory/overview/PasskeyInventory.h"
#include "linux/permission/Permissions.h"
#include "platform/SceneGraph.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::gtk {

/// The windows of which there is one at a time, beside the main windows. Each call makes the
/// window, or brings the one that is open to the front. Main thread only.
class SoleWindows {
public:
    struct Handlers {
        /// A window was made, and is not on the screen yet.
        std::function<void(ProgramWindow& window)> made;
        std::function<void(ProgramWindow& window)> present;
        /// The user has closed the window.
        std::function<void(std::shared_ptr<ProgramWindow> window)> closed;
    };
    explicit SoleWindows(Handlers handlers) : handlers(std::move(handlers)) {}
    SoleWindows(const SoleWindows&) = delete;
    SoleWindows& operator=(const SoleWindows&) = delete;

    void showSettings(const platform::SettingsScene& scene);
    void showAbout(const std::string& version);
    void showShortcuts(const std::vector<ShortcutGroup>& groups);
    void showPermissions(const std::shared_ptr<permission::Permissions>& permissions);
    void showPasskeys(const std::shared_ptr<inventory::PasskeyInventory>& passkeys);

    /// Destroys those that are open.
    void clear() { open.clear(); }

private:
    template <typename Window, typename Content>
    void show(const char* name, const Content& content);

    const Handlers handlers;
    std::map<std::string, std::shared_ptr<ProgramWindow>> open;
};

} // namespace kelo::gtk
