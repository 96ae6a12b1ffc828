#pragma once

#include "bundle/InstalledBundle.h"
#include "linux/authorization/PasskeyServices.h"
#include "linux/desktop/PosixFileSystem.h"
#include "linux/gtk/application/GtkApplicationHost.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/gtk/dialogs/GtkPageDialogs.h"
#include "linux/gtk/dialogs/GtkPasskeySheet.h"
#include "linux/input/KeyboardMonitors.h"
#include "linux/panel/DesktopPanels.h"
#include "linux/permission/Permissions.h"
#include "linux/session/LinuxUserSession.h"
#include "linux/window/OpenPages.h"
#include "platform/Desktop.h"
#include "posix/SystemClock.h"
#include "updater/tree/InstallRecovery.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::downloads {
class DownloadList;
}

namespace kelo::webkit {
class WebKitSession;
}

namespace kelo::desktop {

/// The seam's implementation for Linux: it owns all adapters. Adapters that start-up does not need
/// are created at their first use. Main thread only.
class LinuxDesktop final : public platform::Desktop {
public:
    /// arguments: the command line of main(). failedUpdate: one that was taken back because
    /// it did not start.
    explicit LinuxDesktop(std::vector<std::string> arguments,
                          std::optional<updater::TreeUpdate> failedUpdate = std::nullopt);
    ~LinuxDesktop() override;

    platform::Application& application() override { return application_; }
    platform::AlertPresenter& alerts() override { return alerts_; }
    Clock& clock() override { return clock_; }
    platform::FileSystem& fileSystem() override { return fileSystem_; }

    std::unique_ptr<platform::HttpSession> makeEphemeralHttpSession() override;
    platform::HttpSession& sharedHttpSession() override;
    std::shared_ptr<platform::EmbeddedWebView>
    makeWebView(platform::Rectangle frame, platform::WebViewConfiguration configuration) override;
    std::shared_ptr<platform::AuthorizationController>
    makeAuthorizationController(std::vector<platform::AuthorizationRequest> requests) override;
    void reportCredential(platform::CredentialReport report) override;
    platform::EventMonitors& eventMonitors() override { return keyboard; }
    platform::UserSession& userSession() override;
    std::shared_ptr<platform::Panel> makePanel(platform::PanelDescription description) override;
    std::optional<platform::Screen> mainScreen() override { return panels.mainScreen(); }
    platform::Bundle& mainBundle() override { return bundle; }
    std::unique_ptr<platform::StandardUpdaterController> makeStandardUpdaterController() override;

private:
    gtk::HostSettings hostSettings();
    void tellOfFailedUpdate();

    std::optional<updater::TreeUpdate> failedUpdate;
    std::shared_ptr<permission::Permissions> permissions;
    std::shared_ptr<downloads::DownloadList> downloadList;
    std::shared_ptr<window::OpenPages> pages = std::make_shared<window::OpenPages>();
    gtk::GtkPasskeySheetFactory sheets;
    gtk::GtkApplicationHost application_;
    gtk::GtkAlertPresenter alerts_;
    authorization::PasskeyServices passkeys;
    input::KeyboardMonitors keyboard;
    panel::DesktopPanels panels;
    bundle::InstalledBundle bundle;
    posix::SystemClock clock_;
    PosixFileSystem fileSystem_;
    std::unique_ptr<platform::HttpSession> sharedSession;
    std::unique_ptr<webkit::WebKitSession> webKitSession;
    std::unique_ptr<session::LinuxUserSession> userSession_;
};

} // namespace kelo::desktop
