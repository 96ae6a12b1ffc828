#pragma once

#include "linux/gtk/application/CommandLine.h"
#include "platform/Application.h"

#include <gtkmm/application.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::gtk {

class ColorScheme;
class MainWindow;
class MenuBar;
class MenuBarExtras;
class ProgramWindow;
class SettingsWindow;

/// The program as a desktop application that runs once for each user: a second start wakes the
/// first one over the session bus and ends. Without a session bus every start runs for itself.
///
/// The toolkit is up from run() on, unless the command line asked for something that does not need
/// it. There is one host at a time. The main loop of the
/// process (MainLoop) must be installed while it runs.
class GtkApplicationHost final : public platform::Application {
public:
    /// With the command line as main() has it, the program's own name first, and what it can be
    /// asked about this desktop.
    explicit GtkApplicationHost(std::vector<std::string> arguments = {"kelo"},
                                std::vector<ReportOption> reports = {});
    ~GtkApplicationHost() override;

    int run(platform::App& app) override;
    void activate() override;
    void terminate() override;
    /// A name that no window group has is ignored.
    void openWindow(std::string_view identifier) override;
    std::shared_ptr<platform::Window> keyWindow() override;
    std::vector<std::shared_ptr<platform::Window>> windows() override;
    std::shared_ptr<platform::Window> makePlainWindow() override;

    /// Opens or raises the settings; does nothing when the program has none.
    void openSettings();

private:
    void makeApplication();
    void startUp();
    void addActions();
    void showMenuBarExtras();
    /// What the command line can ask for besides the program's own actions.
    std::vector<platform::ProgramAction> ownActions();
    void readScenes();
    void activated();
    void openMainWindow();
    void present(Gtk::Window& window);
    const platform::WindowGroup* firstWindowGroup() const;
    const platform::WindowGroup* windowGroup(std::string_view identifier) const;
    const platform::SettingsScene* settingsScene() const;
    MenuBar& menuBar();
    void mainWindowClosed(const std::string& identifier);
    void windowClosed(std::shared_ptr<ProgramWindow> window);
    std::vector<ProgramWindow*> programWindows();

    const std::vector<std::string> arguments;
    const std::vector<ReportOption> reports;
    std::vector<std::string> requestedActions; ///< by this start, in place of a window
    Glib::RefPtr<Gtk::Application> application;
    platform::App* app = nullptr; ///< while it runs
    platform::SceneGraph scenes;
    bool scenesRead = false;
    std::shared_ptr<ColorScheme> colorScheme;
    std::unique_ptr<MenuBarExtras> menuBarExtras;
    std::unique_ptr<MenuBar> menuBar_;
    std::map<std::string, std::shared_ptr<MainWindow>, std::less<>> mainWindows;
    std::shared_ptr<SettingsWindow> settings;
};

} // namespace kelo::gtk
