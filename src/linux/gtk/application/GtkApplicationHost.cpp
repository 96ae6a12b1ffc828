#include "linux/gtk/application/GtkApplicationHost.h"

#include "base/async/MainLoop.h"
#include "deployment/Deployment.h"
#include "linux/gtk/application/MenuBarExtras.h"
#include "linux/gtk/application/RunningInstance.h"
#include "linux/gtk/kit/ActivationToken.h"
#include "linux/gtk/kit/ColorScheme.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "linux/gtk/kit/Program.h"
#include "linux/gtk/kit/Style.h"
#include "linux/gtk/main/MainWindow.h"
#include "linux/gtk/main/MenuBar.h"
#include "linux/gtk/main/SettingsWindow.h"

#include <gdk/gdk.h>
#include <glibmm/init.h>
#include <glibmm/miscutils.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

namespace {

constexpr const char* quitAction = "quit";

/// Texts follow the user's language, but the C++ streams of other rooms must not begin to group the
/// digits of a port number, as they would under the user's locale.
void keepStreamsPlain() {
    Glib::set_init_to_users_preferred_locale(false);
}

// Whoever asked for the action may show a waiting pointer until a window of ours appears, and an
// action may open none.
void endStartUpNotice() {
    GdkDisplay* const display = gdk_display_get_default();
    const char* const identifier =
        display ? gdk_display_get_startup_notification_id(display) : nullptr;
    if (identifier)
        gdk_display_notify_startup_complete(display, identifier);
}

} // namespace

GtkApplicationHost::GtkApplicationHost(std::vector<std::string> arguments,
                                       std::vector<ReportOption> reports)
    : arguments(std::move(arguments)), reports(std::move(reports)) {
    keepStreamsPlain();
}

GtkApplicationHost::~GtkApplicationHost() = default;

int GtkApplicationHost::run(platform::App& toRun) {
    auto actions = ownActions();
    for (auto& action : toRun.actions())
        actions.push_back(std::move(action));
    auto asked = readCommandLine(arguments, reports, actions);
    if (asked.exitStatus)
        return *asked.exitStatus;
    if (!asked.actions.empty() && askRunningInstance(asked.actions))
        return 0;
    // There is nothing to quit, and no sense in starting for it.
    if (std::find(asked.actions.begin(), asked.actions.end(), quitAction) != asked.actions.end())
        return 0;
    app = &toRun;
    requestedActions = std::move(asked.actions);
    makeApplication();
    const int status = application->run();
    mainWindows.clear();
    settings.reset();
    menuBarExtras.reset();
    menuBar_.reset();
    colorScheme.reset();
    scenes.clear();
    app = nullptr;
    return status;
}

void GtkApplicationHost::makeApplication() {
    const std::string identifier(deployment::applicationIdentifier);
    // Desktops match windows to the desktop entry by this name.
    Glib::set_prgname(identifier);
    if (Glib::get_application_name() != programName) // the toolkit takes a name only once
        Glib::set_application_name(programName);
    application = Gtk::Application::create(identifier);
    application->signal_startup().connect([this] { startUp(); });
    application->signal_activate().connect([this] { activated(); });
}

void GtkApplicationHost::startUp() {
    loadStyle();
    colorScheme = std::make_shared<ColorScheme>(application->get_dbus_connection());
    addActions();
    readScenes();
    // After the window, which somebody waits for. The color scheme goes when the run ends.
    MainLoop::main().post([this, running = std::weak_ptr(colorScheme)] {
        if (!running.expired())
            showMenuBarExtras();
    });
    // Whether the program outlives its last window is the delegate's to say, not the toolkit's.
    application->hold();
}

void GtkApplicationHost::showMenuBarExtras() {
    menuBarExtras = std::make_unique<MenuBarExtras>(
        application->get_dbus_connection(), scenes, *colorScheme,
        MenuBarExtras::Handlers{[this] { openMainWindow(); }, [this] { openSettings(); }});
}

void GtkApplicationHost::addActions() {
    application->add_action("preferences", [this] { openSettings(); });
    auto actions = ownActions();
    for (auto& action : app->actions())
        actions.push_back(std::move(action));
    for (const auto& action : actions)
        application->add_action(action.name, [run = action.action] {
            run();
            endStartUpNotice();
        });
    application->set_accel_for_action("app.quit", "<Control>q");
    application->set_accel_for_action("app.preferences", "<Control>comma");
    application->set_accel_for_action("win.close", "<Control>w");
}

std::vector<platform::ProgramAction> GtkApplicationHost::ownActions() {
    return {
        {"open", "Open the main window, or raise it when it is open", [this] { openMainWindow(); }},
        {"settings", "Open the settings", [this] { openSettings(); }},
        {quitAction, "End the running program, if there is one", [this] { terminate(); }}};
}

void GtkApplicationHost::readScenes() {
    if (!std::exchange(scenesRead, true))
        scenes = app->body();
}

void GtkApplicationHost::activated() {
    const auto requested = std::exchange(requestedActions, {});
    for (const auto& action : requested)
        application->activate_action(action);
    if (!requested.empty())
        return;
    openMainWindow();
}

void GtkApplicationHost::openMainWindow() {
    readScenes();
    if (const auto* first = firstWindowGroup())
        openWindow(first->identifier);
}

void GtkApplicationHost::activate() {
    const auto open = programWindows();
    // A token that came with the click is left to the window that is opened next.
    if (!open.empty())
        open.front()->present();
}

void GtkApplicationHost::terminate() {
    application->quit();
}

void GtkApplicationHost::openWindow(std::string_view identifier) {
    readScenes();
    if (const auto open = mainWindows.find(identifier); open != mainWindows.end()) {
        present(*open->second);
        return;
    }
    const auto* group = windowGroup(identifier);
    if (!group)
        return;
    // Before the window is built: reading the content sets its page loading, and the page takes
    // longer than the window.
    const auto description = group->content.body();
    const auto window =
        std::make_shared<MainWindow>(*group, description, menuBar().model(),
                                     [this, name = group->identifier] { mainWindowClosed(name); });
    mainWindows.emplace(group->identifier, window);
    application->add_window(*window);
    present(*window);
}

void GtkApplicationHost::openSettings() {
    readScenes();
    if (!settings) {
        const auto* scene = settingsScene();
        if (!scene)
            return;
        settings = std::make_shared<SettingsWindow>(
            *scene, [this] { windowClosed(std::exchange(settings, nullptr)); });
        application->add_window(*settings);
        if (!mainWindows.empty())
            settings->set_transient_for(*mainWindows.begin()->second);
    }
    present(*settings);
}

void GtkApplicationHost::present(Gtk::Window& window) {
    presentWithActivationToken(window);
    // While a dialog is up, it is the one that can be answered.
    if (auto* modal = ModalWindow::topmost())
        modal->present();
}

void GtkApplicationHost::mainWindowClosed(const std::string& identifier) {
    auto closed = mainWindows.extract(identifier);
    if (closed.empty())
        return;
    closed.mapped()->releaseWebView();
    windowClosed(std::move(closed.mapped()));
}

void GtkApplicationHost::windowClosed(std::shared_ptr<ProgramWindow> window) {
    application->remove_window(*window);
    // The window is inside its own event handling still.
    MainLoop::main().post([window = std::move(window)]() mutable { window.reset(); });
    if (programWindows().empty() &&
        app->applicationDelegate().applicationShouldTerminateAfterLastWindowClosed())
        terminate();
}

std::shared_ptr<platform::Window> GtkApplicationHost::keyWindow() {
    for (auto* window : programWindows())
        if (window->is_active())
            return window->handle();
    return nullptr;
}

std::vector<std::shared_ptr<platform::Window>> GtkApplicationHost::windows() {
    std::vector<std::shared_ptr<platform::Window>> handles;
    for (auto* window : programWindows())
        handles.push_back(window->handle());
    return handles;
}

std::shared_ptr<platform::Window> GtkApplicationHost::makePlainWindow() {
    return std::make_shared<WindowHandle>(std::make_unique<Gtk::Window>());
}

std::vector<ProgramWindow*> GtkApplicationHost::programWindows() {
    std::vector<ProgramWindow*> found;
    for (auto* window : application->get_windows()) // most recently used first
        if (auto* ours = dynamic_cast<ProgramWindow*>(window))
            found.push_back(ours);
    return found;
}

MenuBar& GtkApplicationHost::menuBar() {
    if (!menuBar_) {
        std::vector<platform::CommandMenu> menus;
        for (const auto& scene : scenes)
            if (const auto* group = std::get_if<platform::WindowGroup>(&scene))
                menus.insert(menus.end(), group->commands.begin(), group->commands.end());
        menuBar_ = std::make_unique<MenuBar>(*application, menus, settingsScene() != nullptr);
    }
    return *menuBar_;
}

const platform::WindowGroup* GtkApplicationHost::firstWindowGroup() const {
    for (const auto& scene : scenes)
        if (const auto* group = std::get_if<platform::WindowGroup>(&scene))
            return group;
    return nullptr;
}

const platform::WindowGroup* GtkApplicationHost::windowGroup(std::string_view identifier) const {
    for (const auto& scene : scenes)
        if (const auto* group = std::get_if<platform::WindowGroup>(&scene))
            if (group->identifier == identifier)
                return group;
    return nullptr;
}

const platform::SettingsScene* GtkApplicationHost::settingsScene() const {
    for (const auto& scene : scenes)
        if (const auto* found = std::get_if<platform::SettingsScene>(&scene))
            return found;
    return nullptr;
}

} // namespace kelo::gtk
