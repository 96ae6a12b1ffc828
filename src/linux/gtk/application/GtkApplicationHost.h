#pragma once

#include "linux/command/ProgramOptions.h"
#include "linux/command/Report.h"
#include "linux/gtk/application/Departure.h"
#include "linux/gtk/application/ProgramMenu.h"
#include "linux/gtk/kit/StateFile.h"
#include "linux/inventory/overview/PasskeyInventory.h"
#include "linux/notification/DesktopNotifications.h"
#include "linux/permission/Permissions.h"
#include "linux/window/OpenPages.h"
#include "platform/Application.h"

#include <gtkmm/application.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::downloads {
class DownloadList;
}

namespace kelo::gtk {

class ColorScheme;
class DownloadNotices;
class MainWindow;
class MenuBar;
class MenuBarExtras;
class PageNotices;
class ProgramWindow;
class ReplacementNotice;
class SoleWindows;
class StayingNotice;

/// What the windows are given beside the app.
struct HostSettings {
    /// What the command line may ask for.
    std::vector<command::Option> options = command::programOptions();
    /// For the window about the program, and asked for when that opens.
    std::function<std::string()> version = [] { return std::string("?"); };
    /// Where the windows remember things; empty to remember nothing.
    std::string stateFile = "";
    std::optional<LoginStart> loginStart = std::nullopt;
    /// Shown in the main windows, and told of by notifications. Null for none.
    std::shared_ptr<downloads::DownloadList> downloads = nullptr;
    /// Asked first before the program ends; null if there are none.
    std::shared_ptr<window::OpenPages> pages = nullptr;
    /// Asked after them, in this order.
    std::vector<Departure::Question> beforeQuit = {};
    /// Path of the program's file, to tell the user when another version takes its place; empty to
    /// tell nothing.
    std::string program = "";
    /// Called once the program runs, after its first window was shown.
    std::function<void()> started = [] {};
    /// Has the program started again once this process has ended.
    std::function<void()> relaunch = [] {};
    /// What the user has allowed the pages; null to show no window about it.
    std::shared_ptr<permission::Permissions> permissions = nullptr;
    /// For the window that shows them, and the option that asks for it; null for neither.
    std::shared_ptr<inventory::PasskeyInventory> passkeys = nullptr;
};

/// The program as a desktop application with one process for each user: a second process activates
/// the first one over the session bus and exits. Without a session bus every process runs for
/// itself.
///
/// run() initializes the toolkit, unless the command line asked for something that does not need
/// it. There is one host at a time. The process's main loop (MainLoop) must be installed while it
/// runs. Main thread only.
class GtkApplicationHost final : public platform::Application {
public:
    /// arguments: of main(), the program's name included. reports: what the options of that kind
    /// do.
    explicit GtkApplicationHost(std::vector<std::string> arguments = {"kelo"},
                                std::vector<command::ReportOption> reports = {},
                                HostSettings given = {});
    ~GtkApplicationHost() override;

    int run(platform::App& app) override;
    void activate() override;
    /// The user may be asked first, and may keep the program; so may a page.
    void terminate() override;
    /// Does nothing if no window group has the identifier.
    void openWindow(std::string_view identifier) override;
    std::shared_ptr<platform::Window> keyWindow() override;
    std::vector<std::shared_ptr<platform::Window>> windows() override;
    std::shared_ptr<platform::Window> makePlainWindow() override;

    /// Shows notifications while run() runs.
    std::shared_ptr<notification::DesktopNotifications> pageNotifications() const;

    /// Opens or raises the settings window. Does nothing if the program has no settings.
    void openSettings();
    void openAbout();
    void openShortcuts();
    void openPermissions();
    void openPasskeys();

private:
    void soleWindowMade(ProgramWindow& window);
    void makeApplication();
    void quit(Departure::Then then);
    void startUp();
    void addActions();
    void showMenuBarExtras();
    /// The program's actions that every desktop application has; the app adds its own.
    std::vector<platform::ProgramAction> standardActions();
    ProgramMenuActions programMenuActions();
    void addCommandMenus();
    void closeActiveWindow();
    void readScenes();
    void activated();
    void openMainWindow();
    /// Shows a page of the service in the main window; logs any other address.
    void showPage(const std::string& address);
    void present(Gtk::Window& window);
    const platform::WindowGroup* windowGroup(std::string_view identifier) const;
    std::vector<Departure::Question> questionsBeforeQuit();
    void announceDownloads();
    void mainWindowClosed(const std::string& identifier);
    void windowClosed(std::shared_ptr<ProgramWindow> window);
    std::vector<ProgramWindow*> programWindows();

    const std::vector<std::string> arguments;
    const std::vector<command::ReportOption> reports;
    const HostSettings given;
    StateFile state;
    Departure departure;
    const std::shared_ptr<PageNotices> pageNotices;
    std::vector<std::string> requestedActions; ///< on the command line, instead of a window
    std::optional<Url> requestedPage;          ///< on the command line
    Glib::RefPtr<Gtk::Application> application;
    platform::App* app = nullptr; ///< during run()
    std::vector<platform::ProgramAction> actions;
    platform::SceneGraph scenes;
    bool scenesRead = false;
    std::shared_ptr<ColorScheme> colorScheme;
    std::unique_ptr<MenuBarExtras> menuBarExtras;
    std::unique_ptr<MenuBar> menuBar;
    bool hasCommandMenus = false;
    std::map<std::string, std::shared_ptr<MainWindow>, std::less<>> mainWindows;
    std::unique_ptr<StayingNotice> stayingNotice;
    std::unique_ptr<ReplacementNotice> replacementNotice;
    std::shared_ptr<DownloadNotices> downloadNotices;
    std::unique_ptr<SoleWindows> soleWindows;
};

} // namespace kelo::gtk
