#include "linux/gtk/application/SoleWindows.h"

#include "linux/gtk/windows/AboutWindow.h"
#include "linux/gtk/windows/PasskeysWindow.h"
#include "linux/gtk/windows/PermissionsWindow.h"
#include "linux/gtk/windows/SettingsWindow.h"

namespace kelo::gtk {

template <typename Window, typename Content>
void SoleWindows::show(const char* name, const Content& content) {
    auto& window = open[name];
    if (!window) {
        window = std::make_shared<Window>(
            content, [this, name] { handlers.closed(std::move(open.extract(name).mapped())); });
        handlers.made(*window);
    }
    handlers.present(*window);
}

void SoleWindows::showSettings(const platform::SettingsScene& scene) {
    show<SettingsWindow>("settings", scene);
}

void SoleWindows::showAbout(const std::string& version) {
    show<AboutWindow>("about", version);
}

void SoleWindows::showShortcuts(const std::vector<ShortcutGroup>& groups) {
    show<ShortcutsWindow>("shortcuts", groups);
}

void SoleWindows::showPermissions(const std::shared_ptr<permission::Permissions>& permissions) {
    show<PermissionsWindow>("permissions", permissions);
}

void SoleWindows::showPasskeys(const std::shared_ptr<inventory::PasskeyInventory>& passkeys) {
    show<PasskeysWindow>("passkeys", passkeys);
}

} // namespace kelo::gtk
