#pragma once

#include "linux/gtk/kit/ProgramWindow.h"
#include "linux/gtk/kit/Redrawing.h"
#include "platform/SceneGraph.h"

#include <giomm/menumodel.h>
#include <gtkmm/box.h>

#include <functional>
#include <memory>
#include <optional>

namespace kelo::downloads {
class DownloadList;
}

namespace kelo::gtk {

class ContentArea;
class DownloadBar;
class FindBar;
class FittingMinimum;
class StateFile;
class TitleBar;
class ViewCommands;
class WindowMemory;

/// A window of a window group, with the main menu in its title bar and the group's content below.
class MainWindow final : public ProgramWindow {
public:
    /// The group and the state, which keeps how the window was, must outlive the window.
    MainWindow(const platform::WindowGroup& group, const Glib::RefPtr<Gio::MenuModel>& menu,
               StateFile& state, std::function<void()> closed);
    ~MainWindow() override;

    /// Computes the group's content and shows it from now on, whatever becomes of it; the page gets
    /// the keyboard focus. Call it once, in the same turn of the main loop as present(), and after
    /// that: making a web view takes longer than making the window, whose first frame then has
    /// both.
    void showContent();

    /// Shows the downloads below the content from now on. Call it once.
    void showDownloads(const std::shared_ptr<downloads::DownloadList>& list);

    /// Gives up the web view, so that the group's next window can show it. A page that is not the
    /// service's does not wait for that window: the web view goes back to the service.
    void leaveWebView();

    /// Remembers how the window is now, for the next one.
    void rememberPlacement();

private:
    void closing() override;
    void draw(const platform::WebContentDescription& description);
    void appear();
    void followFocus();
    void leaveMenus();
    bool switchToDownloads();

    const platform::WindowGroup& group;
    StateFile& state;
    std::unique_ptr<ContentArea> content;
    std::unique_ptr<FittingMinimum> minimum;
    std::unique_ptr<FindBar> findBar;
    std::unique_ptr<ViewCommands> viewCommands;
    std::unique_ptr<DownloadBar> downloadBar;
    Gtk::Box column{Gtk::Orientation::VERTICAL};
    std::unique_ptr<TitleBar> titleBar;
    std::unique_ptr<WindowMemory> memory;
    bool focusIsInMenu = false;
    bool isLeavingMenus = false;
    std::optional<Redrawing> redrawing;
};

} // namespace kelo::gtk
