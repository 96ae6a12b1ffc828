#pragma once

#include "linux/gtk/kit/ProgramWindow.h"
#include "linux/gtk/kit/Redrawing.h"
#include "linux/gtk/main/ContentArea.h"
#include "platform/SceneGraph.h"

#include <giomm/menumodel.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/popovermenubar.h>

#include <functional>
#include <optional>

namespace kelo::gtk {

/// A window of a window group: the main menu in its header bar, the group's content below.
class MainWindow final : public ProgramWindow {
public:
    /// The description is the group's content, read before so that its web view is loading already.
    /// The group must outlive the window.
    MainWindow(const platform::WindowGroup& group,
               const platform::WebContentDescription& description,
               const Glib::RefPtr<Gio::MenuModel>& menu, std::function<void()> closed);

    /// Gives the web view free, so that the group's next window can show it.
    void releaseWebView();

private:
    void appear();
    void followFocus();
    void leaveMenus();

    const platform::WindowGroup& group;
    ContentArea content;
    Gtk::HeaderBar header;
    Gtk::PopoverMenuBar menuBar;
    bool focusIsInMenu = false;
    std::optional<Redrawing> redrawing;
};

} // namespace kelo::gtk
