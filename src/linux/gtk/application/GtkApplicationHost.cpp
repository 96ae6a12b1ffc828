#include "linux/gtk/application/GtkApplicationHost.h"

#include "base/Translation.h"
#include "base/async/MainLoop.h"
#include "deployment/Deployment.h"
#include "linux/command/RunningProgram.h"
#include "linux/gtk/application/DownloadNotices.h"
#include "linux/gtk/application/MenuBarExtras.h"
#include "linux/gtk/application/PageNotices.h"
#include "linux/gtk/application/ReplacementNotice.h"
#include "linux/gtk/application/RunningInstance.h"
#include "linux/gtk/application/SoleWindows.h"
#include "linux/gtk/application/StayingNotice.h"
#include "linux/gtk/application/TokenApplication.h"
#include "linux/gtk/application/ToolkitStart.h"
#include "linux/gtk/kit/ColorScheme.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "linux/gtk/kit/Style.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/gtk/main/MainWindow.h"
#include "linux/gtk/main/MenuBar.h"
#include "linux/gtk/main/ViewCommands.h"

#include <glibmm/miscutils.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

namespace {

template <typename Kind>
const Kind* firstScene(const platform::SceneGraph& scenes) {
    for (const auto& scene : scenes)
        if (const auto* found = std::get_if<Kind>(&scene))
            return found;
    return nullptr;
}

} // namespace

GtkApplicationHost::GtkApplicationHost(std::vector<std::string> arguments,
                                       std::vector<command::ReportOption> reports,
                                       HostSettings given)
    : arguments(std::move(arguments)),
      reports(std::move(reports)),
      given(std::move(given)),
      state(this->given.stateFile),
      departure(questionsBeforeQuit(), [this](auto then) { quit(then); }),
      pageNotices(std::make_shared<PageNotices>()),
      soleWindows(std::make_unique<SoleWindows>(
          SoleWindows::Handlers{[this](auto& window) { soleWindowMade(window); },
                                [this](auto& window) { present(window); },
                                [this](auto window) { windowClosed(std::move(window)); }})) {
    keepStreamsPlain();
}

GtkApplicationHost::~GtkApplicationHost() = default;

int GtkApplicationHost::run(platform::App& toRun) {
    actions = standardActions();
    for (auto& action : toRun.actions())
        actions.push_back(std::move(action));
    auto asked = command::readCommandLine(arguments, given.options);
    if (asked.exitStatus)
        return *asked.exitStatus;
    if (!asked.reports.empty())
        return command::printReports(asked.reports, reports);
    const bool asksForMore = !asked.actions.empty() || asked.page;
    if (asksForMore && command::askRunningProgram(asked))
        return 0;
    // No process is running, so there is nothing to quit.
    if (std::ranges::find(asked.actions, command::quitOption) != asked.actions.end())
        return 0;
    app = &toRun;
    requestedActions = std::move(asked.actions);
    requestedPage = std::move(asked.page);
    makeApplication();
    registerApplication(*application);
    const int status = application->run();
    pageNotices->detach();
    mainWindows.clear();
    soleWindows->clear();
    menuBarExtras.reset();
    menuBar.reset();
    stayingNotice.reset();
    downloadNotices.reset();
    colorScheme.reset();
    scenes.clear();
    app = nullptr;
    return status;
}

void GtkApplicationHost::makeApplication() {
    const std::string identifier(deployment::applicationIdentifier);
    // Desktops use this name to find the desktop entry of a window.
    Glib::set_prgname(identifier);
    if (Glib::get_application_name() != programName) // the toolkit accepts a name only once
        Glib::set_application_name(programName);
    application = TokenApplication::create(identifier);
    application->signal_startup().connect([this] { startUp(); });
    application->signal_activate().connect([this] { activated(); });
}

void GtkApplicationHost::startUp() {
    prepareForWindows();
    loadStyle();
    colorScheme = std::make_shared<ColorScheme>(application->get_dbus_connection());
    stayingNotice = std::make_unique<StayingNotice>(*application, state);
    pageNotices->attach(application, [this] { openMainWindow(); });
    addActions();
    announceDownloads();
    readScenes();
    menuBar = std::make_unique<MenuBar>(MenuActions{
        *application, [this](const std::string& action, const std::string& accelerator) {
            application->set_accels_for_action(
                action, accelerator.empty() ? std::vector<Glib::ustring>{}
                                            : std::vector<Glib::ustring>{accelerator});
        }});
    menuBar->append(programMenu(programMenuActions()));
    // After the window, which the user waits for. The color scheme is gone once the run has ended.
    MainLoop::main().post([this, running = std::weak_ptr(colorScheme)] {
        if (running.expired())
            return;
        showMenuBarExtras();
        replacementNotice = std::make_unique<ReplacementNotice>(*application, given.program);
        given.started();
    });
    // The delegate decides whether the program exits after its last window, not the toolkit.
    application->hold();
}

void GtkApplicationHost::showMenuBarExtras() {
    menuBarExtras = std::make_unique<MenuBarExtras>(
        application->get_dbus_connection(), scenes, *colorScheme,
        MenuBarExtras::Handlers{[this] { openMainWindow(); }, [this] { openSettings(); }});
}

void GtkApplicationHost::addActions() {
    for (const auto& action : actions)
        application->add_action(action.name, [run = action.action] {
            noteUserRequest();
            run();
            endStartUpNotice();
        });
    application->add_action("restart", [this] { departure.request(Departure::Then::startAgain); });
    application->add_action_with_parameter(
        command::showPageAction, Glib::VARIANT_TYPE_STRING,
        [this](const Glib::VariantBase& address) {
            showPage(Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(address).get());
        });
}

void GtkApplicationHost::announceDownloads() {
    if (!given.downloads)
        return;
    const auto isSeen = [this] {
        return std::ranges::any_of(mainWindows,
                                   [](const auto& each) { return each.second->is_active(); });
    };
    downloadNotices = std::make_shared<DownloadNotices>(*application, given.downloads, isSeen);
    given.downloads->addObserver(downloadNotices);
}

std::vector<platform::ProgramAction> GtkApplicationHost::standardActions() {
    std::vector<platform::ProgramAction> standard{
        {"open", [this] { openMainWindow(); }},
        {"settings", [this] { openSettings(); }},
        // Doing something else than to open the window is all that it does.
        {"background", [] {}},
        {command::quitOption, [this] { terminate(); }}};
    if (given.passkeys)
        standard.push_back({"passkeys", [this] { openPasskeys(); }});
    return standard;
}

ProgramMenuActions GtkApplicationHost::programMenuActions() {
    ProgramMenuActions chosen;
    if (firstScene<platform::SettingsScene>(scenes))
        chosen.openSettings = [this] { openSettings(); };
    if (given.permissions)
        chosen.openPermissions = [this] { openPermissions(); };
    if (given.passkeys)
        chosen.openPasskeys = [this] { openPasskeys(); };
    chosen.openShortcuts = [this] { openShortcuts(); };
    chosen.openAbout = [this] { openAbout(); };
    chosen.loginStart = given.loginStart;
    chosen.closeWindow = [this] { closeActiveWindow(); };
    chosen.quit = [this] { terminate(); };
    return chosen;
}

// Not before the first main window: computing the menus makes the objects that they show, and those
// of the window's content come first.
void GtkApplicationHost::addCommandMenus() {
    if (std::exchange(hasCommandMenus, true))
        return;
    for (const auto& scene : scenes)
        if (const auto* group = std::get_if<platform::WindowGroup>(&scene))
            for (const auto& menu : group->commands)
                menuBar->append(menu);
    menuBar->append(ViewCommands::shortcuts(), ViewCommands::menu());
}

void GtkApplicationHost::readScenes() {
    if (!std::exchange(scenesRead, true))
        scenes = app->body();
}

void GtkApplicationHost::activated() {
    const auto requested = std::exchange(requestedActions, {});
    for (const auto& action : requested)
        application->activate_action(action);
    if (const auto page = std::exchange(requestedPage, std::nullopt))
        showPage(page->absoluteString());
    else if (requested.empty())
        openMainWindow();
}

void GtkApplicationHost::openMainWindow() {
    readScenes();
    if (const auto* first = firstScene<platform::WindowGroup>(scenes))
        openWindow(first->identifier);
}

// Checked again, because every program of the user can ask for it.
void GtkApplicationHost::showPage(const std::string& address) {
    const auto page = command::pageOfService(address);
    if (!page) {
        g_warning("A page that is not the service's was asked for; it is not shown");
        return;
    }
    openMainWindow();
    if (const auto* group = firstScene<platform::WindowGroup>(scenes))
        group->content.body().webView->load(platform::UrlRequest{*page});
}

void GtkApplicationHost::activate() {
    if (const auto open = programWindows(); !open.empty())
        presentKeepingActivationToken(*open.front());
}

void GtkApplicationHost::terminate() {
    departure.request();
}

// The pages come first, because other answers may give something up at once.
std::vector<Departure::Question> GtkApplicationHost::questionsBeforeQuit() {
    auto questions = given.beforeQuit;
    const auto showPage = [this] {
        if (mainWindows.empty())
            openMainWindow();
    };
    if (given.pages)
        questions.insert(questions.begin(), questionOf(given.pages, showPage));
    return questions;
}

void GtkApplicationHost::quit(Departure::Then then) {
    for (const auto& [name, window] : mainWindows)
        window->rememberPlacement();
    if (then == Departure::Then::startAgain)
        given.relaunch();
    replacementNotice.reset();
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
    addCommandMenus();
    const auto window =
        std::make_shared<MainWindow>(*group, menuBar->model(), state,
                                     [this, name = group->identifier] { mainWindowClosed(name); });
    if (given.downloads)
        window->showDownloads(given.downloads);
    mainWindows.emplace(group->identifier, window);
    application->add_window(*window);
    stayingNotice->windowOpened();
    // The window manager has its work with the window while the content's web view is made.
    present(*window);
    window->showContent();
}

std::shared_ptr<notification::DesktopNotifications> GtkApplicationHost::pageNotifications() const {
    return pageNotices;
}

void GtkApplicationHost::openSettings() {
    readScenes();
    if (const auto* scene = firstScene<platform::SettingsScene>(scenes))
        soleWindows->showSettings(*scene);
}

void GtkApplicationHost::openAbout() {
    soleWindows->showAbout(given.version());
}

void GtkApplicationHost::openPermissions() {
    soleWindows->showPermissions(given.permissions);
}

void GtkApplicationHost::openPasskeys() {
    soleWindows->showPasskeys(given.passkeys);
}

void GtkApplicationHost::openShortcuts() {
    soleWindows->showShortcuts(menuBar->shortcuts());
}

void GtkApplicationHost::soleWindowMade(ProgramWindow& window) {
    application->add_window(window);
    if (!mainWindows.empty())
        window.set_transient_for(*mainWindows.begin()->second);
}

void GtkApplicationHost::present(Gtk::Window& window) {
    presentWithActivationToken(window);
    // An open dialog blocks the window, so it has to be in front of it.
    if (auto* modal = ModalWindow::topmost())
        modal->present();
}

void GtkApplicationHost::closeActiveWindow() {
    // A dialog has to be answered first.
    if (ModalWindow::topmost())
        return;
    if (auto* window = dynamic_cast<ProgramWindow*>(application->get_active_window()))
        window->close();
}

void GtkApplicationHost::mainWindowClosed(const std::string& identifier) {
    auto closed = mainWindows.extract(identifier);
    if (closed.empty())
        return;
    closed.mapped()->leaveWebView();
    windowClosed(std::move(closed.mapped()));
}

void GtkApplicationHost::windowClosed(std::shared_ptr<ProgramWindow> window) {
    application->remove_window(*window);
    // Destroyed later, because the window is still inside its own event handling.
    MainLoop::main().post([window = std::move(window)]() mutable { window.reset(); });
    if (!programWindows().empty())
        return;
    if (app->applicationDelegate().applicationShouldTerminateAfterLastWindowClosed())
        terminate();
    else
        stayingNotice->windowClosed();
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

const platform::WindowGroup* GtkApplicationHost::windowGroup(std::string_view identifier) const {
    for (const auto& scene : scenes)
        if (const auto* group = std::get_if<platform::WindowGroup>(&scene))
            if (group->identifier == identifier)
                return group;
    return nullptr;
}

} // namespace kelo::gtk
