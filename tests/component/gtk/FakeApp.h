#pragma once

#include "base/ObservableObject.h"
#include "component/gtk/FakePage.h"
#include "platform/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tests {

/// An app with a main window, an "Account" menu and settings. It records what was asked of it.
class FakeApp final : public platform::App, private platform::ApplicationDelegate {
public:
    struct State : ObservableObject {
        Published<bool> onLogin{*this, false};
        Published<bool> busy{*this, false};
        Published<std::optional<std::string>> error{*this, std::nullopt};
        Published<bool> registering{*this, false};
        Published<std::string> version{*this, "1.4.2 (57)"};
    };

    platform::ApplicationDelegate& applicationDelegate() override { return *this; }
    platform::SceneGraph body() override;
    std::vector<platform::ProgramAction> actions() override;

    std::shared_ptr<State> state = std::make_shared<State>();
    std::shared_ptr<FakePage>
        page; ///< made by the first drawing, after the toolkit was initialized
    bool terminatesAfterLastWindow = false;
    /// Called last on each overlay, to change it.
    std::function<void(platform::OverlayDescription&)> adjustOverlay;
    /// "body", "content", "appear", "sign in", "register", "copy"
    std::vector<std::string> events;

    int count(const std::string& event) const;

private:
    bool applicationShouldTerminateAfterLastWindowClosed() override {
        return terminatesAfterLastWindow;
    }
    platform::WebContentDescription content();
    platform::Menu accountMenu();
    platform::Menu trayMenu();
    platform::SettingsDescription settings();
};

} // namespace kelo::tests
