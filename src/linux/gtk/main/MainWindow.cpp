#include "linux/gtk/main/MainWindow.h"

#include "base/async/MainLoop.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/gtk/main/ContentArea.h"
#include "linux/gtk/main/DownloadBar.h"
#include "linux/gtk/main/FindBar.h"
#include "linux/gtk/main/FittingMinimum.h"
#include "linux/gtk/main/FrameMoments.h"
#include "linux/gtk/main/TitleBar.h"
#include "linux/gtk/main/ViewCommands.h"
#include "linux/gtk/main/WindowMemory.h"
#include "posix/Moments.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/shortcutcontroller.h>

#include <utility>

namespace kelo::gtk {

MainWindow::MainWindow(const platform::WindowGroup& group, const Glib::RefPtr<Gio::MenuModel>& menu,
                       StateFile& state, std::function<void()> closed)
    : ProgramWindow(std::move(closed)),
      group(group),
      state(state),
      content(std::make_unique<ContentArea>(group.defaultSize)),
      findBar(std::make_unique<FindBar>(*content)),
      titleBar(std::make_unique<TitleBar>(menu)) {
    markFrames(*this);
    set_title(programName);
    add_css_class("kelo-main");
    if (!get_display()->is_composited())
        add_css_class("kelo-opaque");
    set_titlebar(*titleBar);
    content->signalPageChanged().connect([this] { titleBar->draw(content->page()); });
    minimum = std::make_unique<FittingMinimum>(*this, *content);
    column.append(*findBar);
    column.append(*content);
    set_child(column);
    memory = std::make_unique<WindowMemory>(*this, state);
    signal_map().connect([this] { appear(); });
    property_focus_widget().signal_changed().connect([this] { followFocus(); });
}

MainWindow::~MainWindow() = default;

void MainWindow::showContent() {
    draw(group.content.body());
    viewCommands = std::make_unique<ViewCommands>(*this, *content, *findBar, state);
    if (group.content.observed)
        redrawing.emplace(group.content.observed(), [this] { draw(group.content.body()); });
    // Before the toolkit, which would focus the menu.
    content->takeFocus();
}

void MainWindow::draw(const platform::WebContentDescription& description) {
    content->draw(description);
    minimum->set(description.minimumSize);
}

void MainWindow::showDownloads(const std::shared_ptr<downloads::DownloadList>& list) {
    downloadBar = std::make_unique<DownloadBar>(list, [this] { content->takeFocus(); });
    column.append(*downloadBar);
    const auto shortcuts = Gtk::ShortcutController::create();
    // Before the content, which leads on to the bars about its page.
    shortcuts->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    shortcuts->add_shortcut(Gtk::Shortcut::create(
        Gtk::KeyvalTrigger::create(GDK_KEY_F6),
        Gtk::CallbackAction::create(
            [this](Gtk::Widget&, const Glib::VariantBase&) { return switchToDownloads(); })));
    add_controller(shortcuts);
}

// From the page to the bar about it, from there to the downloads, and back to the page.
bool MainWindow::switchToDownloads() {
    if (downloadBar->holdsFocus()) {
        content->takeFocus();
        return true;
    }
    if (!downloadBar->get_visible() || content->leadsToBar())
        return false;
    downloadBar->takeFocus();
    return true;
}

void MainWindow::leaveWebView() {
    redrawing.reset();
    content->close();
}

void MainWindow::rememberPlacement() {
    memory->remember();
}

void MainWindow::closing() {
    rememberPlacement();
}

void MainWindow::appear() {
    posix::mark(posix::Moment::windowMapped);
    if (group.onAppear)
        MainLoop::main().post(group.onAppear);
}

void MainWindow::followFocus() {
    auto* focus = get_focus();
    const bool wasInMenu = focusIsInMenu;
    focusIsInMenu = focus && focus->is_ancestor(titleBar->mainMenu());
    if (!wasInMenu && !isLeavingMenus && focus && focus->is_ancestor(*content))
        content->rememberFocus(*focus);
    if (!wasInMenu || focusIsInMenu || std::exchange(isLeavingMenus, true))
        return;
    // When a menu closes, the toolkit chooses who gets the focus, but people expect it back where
    // it was in the content. Another menu may be opening instead, which the next turn of the main
    // loop shows, or a command may have chosen.
    MainLoop::main().post([this, handle = handle()] {
        if (WindowHandle::resolve(handle))
            leaveMenus();
    });
}

void MainWindow::leaveMenus() {
    isLeavingMenus = false;
    auto* focus = get_focus();
    if (!focusIsInMenu && !(focus && focus->is_ancestor(*findBar)))
        content->takeFocus();
}

} // namespace kelo::gtk
