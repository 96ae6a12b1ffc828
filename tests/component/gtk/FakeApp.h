#pragma once

#include "base/Published.h"
#include "component/gtk/FakePage.h"
#include "platform/Application.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tests {

/// A system that has a main window, an "Account" menu and settings, and notes what is asked of it.
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
    std::shared_ptr<FakePage> page; ///< made by the first drawing, when the toolkit is up
    bool terminatesAfterLastWindow = false;
    /// Has the last word on the overlay.
    std::function<void(platform::OverlayDescription&)> adjustOverlay;
    std::vector<std::string> events; ///< "body", "content", "appear", "sign in", "register"

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
