#pragma once

#include "linux/bundle/InstalledBundle.h"
#include "linux/desktop/PosixFileSystem.h"
#include "linux/desktop/SystemClock.h"
#include "linux/gtk/GtkAlertPresenter.h"
#include "linux/gtk/GtkApplicationHost.h"
#include "linux/gtk/GtkPasskeySheet.h"
#include "linux/input/KeyboardMonitors.h"
#include "linux/panel/DesktopPanels.h"
#include "linux/passkey/PasskeyServices.h"
#include "platform/Desktop.h"

#include <memory>

namespace kelo::desktop {

class WebKitSession;

/// The Linux desktop: every adapter behind the seam, put together. What start-up does not need is
/// made when it is first asked for. Main thread only.
class LinuxDesktop final : public platform::Desktop {
public:
    /// With the command line as main() has it.
    explicit LinuxDesktop(std::vector<std::string> arguments);
    ~LinuxDesktop() override;

    platform::Application& application() override { return application_; }
    platform::AlertPresenter& alerts() override { return alerts_; }
    platform::Clock& clock() override { return clock_; }
    platform::FileSystem& fileSystem() override { return fileSystem_; }

    std::unique_ptr<platform::HttpSession> makeEphemeralHttpSession() override;
    platform::HttpSession& sharedHttpSession() override;
    std::shared_ptr<platform::EmbeddedWebView>
    makeWebView(platform::Rectangle frame, platform::WebViewConfiguration configuration) override;
    std::shared_ptr<platform::AuthorizationController>
    makeAuthorizationController(std::vector<platform::AuthorizationRequest> requests) override;
    platform::EventMonitors& eventMonitors() override { return keyboard; }
    std::shared_ptr<platform::Panel> makePanel(platform::PanelDescription description) override;
    std::optional<platform::Screen> mainScreen() override { return panels.mainScreen(); }
    platform::Bundle& mainBundle() override { return bundle; }
    std::unique_ptr<platform::StandardUpdaterController> makeStandardUpdaterController() override;

private:
    GtkApplicationHost application_;
    GtkAlertPresenter alerts_;
    GtkPasskeySheetFactory sheets;
    PasskeyServices passkeys;
    KeyboardMonitors keyboard;
    DesktopPanels panels;
    InstalledBundle bundle;
    SystemClock clock_;
    PosixFileSystem fileSystem_;
    std::unique_ptr<platform::HttpSession> sharedSession;
    std::unique_ptr<WebKitSession> webKitSession;
};

} // namespace kelo::desktop
