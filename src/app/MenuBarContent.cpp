#include "app/MenuBarContent.h"

#include "app/UpdaterController.h"
#include "platform/Desktop.h"

namespace kelo::app {

using platform::Desktop;
using platform::MenuItem;
using platform::MenuSeparator;
using platform::SettingsLink;

namespace {

void openMainWindow() {
    auto& application = Desktop::current().application();
    // Activated first, because another program may be in front.
    application.activate();
    application.openWindow("main");
}

} // namespace

void checkForUpdates() {
    UpdaterController::shared().controller->checkForUpdates();
}

platform::Menu MenuBarContent::body() const {
    return {
        MenuItem{"Open Kelo", true, openMainWindow},
        MenuSeparator{},
        MenuItem{"Check for Updates…", true, &checkForUpdates},
        SettingsLink{"Settings…"},
        MenuSeparator{},
        MenuItem{"Quit Kelo", true, [] { Desktop::current().application().terminate(); },
                 platform::KeyboardShortcut{"q", platform::KeyModifier::command}},
    };
}

} // namespace kelo::app
