#include "linux/gtk/application/ProgramMenu.h"

#include "base/Translation.h"
#include "linux/gtk/kit/WindowPresentation.h"

namespace kelo::gtk {

namespace {

using platform::KeyboardShortcut;
using platform::MenuItem;

MenuItem item(const std::string& label, const std::function<void()>& action,
              const char* key = nullptr) {
    MenuItem made{label, true, action};
    if (key)
        made.shortcut = KeyboardShortcut{key, platform::KeyModifier::command};
    return made;
}

MenuItem loginItem(const LoginStart& loginStart) {
    const bool isOn = loginStart.isOn();
    auto made = item(translated("Start at Login"), [set = loginStart.setOn, isOn] { set(!isOn); });
    made.checked = isOn;
    return made;
}

platform::Menu entries(const ProgramMenuActions& actions) {
    platform::Menu menu;
    if (actions.openSettings)
        menu.emplace_back(item("Settings…", actions.openSettings, ","));
    if (actions.openPermissions)
        menu.emplace_back(item(translated("Permissions…").c_str(), actions.openPermissions));
    if (actions.openPasskeys)
        menu.emplace_back(item(translated("Passkeys on This Computer…"), actions.openPasskeys));
    if (actions.loginStart)
        menu.emplace_back(loginItem(*actions.loginStart));
    menu.emplace_back(std::in_place_type<platform::MenuSeparator>);
    menu.emplace_back(item(translated("Keyboard Shortcuts"), actions.openShortcuts, "?"));
    menu.emplace_back(item(translated("About Kelo"), actions.openAbout));
    menu.emplace_back(std::in_place_type<platform::MenuSeparator>);
    menu.emplace_back(item(translated("Close Window"), actions.closeWindow, "w"));
    menu.emplace_back(item(translated("Quit"), actions.quit, "q"));
    return menu;
}

} // namespace

platform::CommandMenu programMenu(const ProgramMenuActions& actions) {
    platform::CommandMenu menu;
    menu.title = programName;
    menu.items.body = [actions] { return entries(actions); };
    if (actions.loginStart)
        menu.items.observed = [observed = actions.loginStart->observed] {
            return std::vector{observed};
        };
    return menu;
}

} // namespace kelo::gtk
