#include "linux/desktop/LinuxDesktop.h"

#include "base/async/Spawn.h"
#include "bundle/ProgramPlace.h"
#include "deployment/Deployment.h"
#include "linux/command/ProgramOptions.h"
#include "linux/desktop/HotkeyReport.h"
#include "linux/desktop/IntegrationOptions.h"
#include "linux/downloads/DownloadFolder.h"
#include "linux/downloads/DownloadList.h"
#include "linux/downloads/QuitQuestion.h"
#include "linux/gtk/dialogs/GtkPermissionAsker.h"
#include "linux/gtk/update/GtkUserDriver.h"
#include "linux/http/SoupHttpSession.h"
#include "linux/inventory/computer/InventoryOfComputer.h"
#include "linux/login/StartAtLogin.h"
#include "linux/update/DesktopUpdater.h"
#include "linux/webkit/WebKitEmbeddedView.h"
#include "linux/webkit/WebKitSession.h"
#include "linux/webkit/navigation/ExternalLinks.h"

#include <glib.h>

#include <filesystem>
#include <utility>

namespace kelo::desktop {

namespace {

command::ReportOption versionReport() {
    return {command::versionOption, [] { return command::versionLine() + "\n"; }};
}

std::filesystem::path stateFolder() {
    return std::filesystem::path(g_get_user_state_dir()) / "kelo";
}

} // namespace

gtk::HostSettings LinuxDesktop::hostSettings() {
    gtk::HostSettings settings;
    settings.pages = pages;
    settings.permissions = permissions;
    settings.passkeys = inventory::inventoryOfComputer(sheets);
    settings.version = [] {
        bundle::InstalledBundle installed;
        return platform::versionString(installed);
    };
    const auto start =
        std::make_shared<login::StartAtLogin>(login::StartAtLogin::Settings::standard());
    settings.loginStart = gtk::LoginStart{[start] { return start->isOn(); },
                                          [start](bool on) { start->setOn(on); }, start};
    settings.downloads = downloadList;
    settings.beforeQuit = {
        [this] { return downloads::mayEndDownloads(downloadList, alerts_); },
    };
    settings.stateFile = stateFolder() / "windows";
    settings.started = [this] { tellOfFailedUpdate(); };
    // Asked now: once the file is replaced, the kernel no longer tells its path.
    settings.program = bundle::programPath();
    settings.relaunch = [program = settings.program] { update::relaunchAfterThisProcess(program); };
    return settings;
}

LinuxDesktop::LinuxDesktop(std::vector<std::string> arguments,
                           std::optional<updater::TreeUpdate> failedUpdate)
    : failedUpdate(std::move(failedUpdate)),
      permissions(std::make_shared<permission::Permissions>(
          stateFolder() / "permissions", std::string(deployment::serviceOrigin))),
      downloadList(std::make_shared<downloads::DownloadList>(
          downloads::desktopFileHandling(webkit::openWithDefaultProgram))),
      application_(std::move(arguments),
                   {versionReport(), hotkeyStatusOption(), integrateOption(), removeOption()},
                   hostSettings()),
      alerts_(application_),
      passkeys(sheets) {}

LinuxDesktop::~LinuxDesktop() = default;

void LinuxDesktop::tellOfFailedUpdate() {
    if (const auto failed = std::exchange(failedUpdate, std::nullopt))
        spawn(update::tellOfFailedUpdate(
            bundle, *failed, std::make_unique<gtk::GtkUserDriver>(webkit::openWithDefaultProgram)));
}

std::unique_ptr<platform::HttpSession> LinuxDesktop::makeEphemeralHttpSession() {
    return http::makeEphemeralHttpSession();
}

platform::HttpSession& LinuxDesktop::sharedHttpSession() {
    if (!sharedSession)
        sharedSession = http::makeSharedHttpSession();
    return *sharedSession;
}

std::shared_ptr<platform::EmbeddedWebView>
LinuxDesktop::makeWebView(platform::Rectangle frame, platform::WebViewConfiguration configuration) {
    if (!webKitSession) {
        auto settings = webkit::WebKitSessionSettings::standard();
        settings.downloads = downloadList;
        settings.dialogs = {std::make_shared<gtk::GtkPageDialogs>(), pages};
        settings.userChoice = {permissions, std::make_shared<gtk::GtkPermissionAsker>(),
                               application_.pageNotifications()};
        webKitSession = std::make_unique<webkit::WebKitSession>(std::move(settings));
        downloads::removeLeftoversInBackground();
    }
    return std::make_shared<webkit::WebKitEmbeddedView>(*webKitSession, frame, configuration);
}

std::shared_ptr<platform::AuthorizationController>
LinuxDesktop::makeAuthorizationController(std::vector<platform::AuthorizationRequest> requests) {
    return passkeys.makeController(std::move(requests));
}

void LinuxDesktop::reportCredential(platform::CredentialReport report) {
    passkeys.report(std::move(report));
}

platform::UserSession& LinuxDesktop::userSession() {
    if (!userSession_)
        userSession_ = std::make_unique<session::LinuxUserSession>();
    return *userSession_;
}

std::shared_ptr<platform::Panel> LinuxDesktop::makePanel(platform::PanelDescription description) {
    return panels.makePanel(description);
}

std::unique_ptr<platform::StandardUpdaterController> LinuxDesktop::makeStandardUpdaterController() {
    return update::makeStandardUpdaterController(
        bundle, [] { return std::make_unique<gtk::GtkUserDriver>(webkit::openWithDefaultProgram); },
        webkit::openWithDefaultProgram, [this] { application_.terminate(); });
}

} // namespace kelo::desktop
