#pragma once

#include "linux/gtk/windows/ShortcutsWindow.h"

#include <giomm/menu.h>
#include <giomm/simpleaction.h>
#include <gtkmm/applicationwindow.h>

#include <functional>
#include <memory>
#include <string>

namespace kelo::window {
class HostedPage;
}

namespace kelo::gtk {

class ContentArea;
class FindBar;
class StateFile;

/// What a main window does with its page: the actions of its "View" menu, their keys, zooming with
/// the wheel, and the mouse buttons that lead back and forward. The page hears the keys first and
/// may take them, unless it does not answer, and except those that lead to another page. How large
/// the page is drawn is remembered.
class ViewCommands {
public:
    /// All of them must outlive this. Who owns the state saves it.
    ViewCommands(Gtk::ApplicationWindow& window, ContentArea& content, FindBar& findBar,
                 StateFile& state);
    ViewCommands(const ViewCommands&) = delete;
    ViewCommands& operator=(const ViewCommands&) = delete;

    /// The entries of the menu, for every window that has these commands.
    static Glib::RefPtr<Gio::MenuModel> menu();
    /// The keys of the menu's entries.
    static ShortcutGroup shortcuts();

private:
    void addActions();
    void addKeys(Gtk::PropagationPhase phase);
    void addMouse();
    void followHistory();
    void restoreZoom();
    void setZoom(double factor);
    void zoomBy(int steps);
    void toggleFullScreen();
    window::HostedPage* page() const;

    Gtk::ApplicationWindow& window;
    ContentArea& content;
    FindBar& findBar;
    StateFile& state;
    Glib::RefPtr<Gio::SimpleAction> back;
    Glib::RefPtr<Gio::SimpleAction> forward;
    std::shared_ptr<const std::function<void()>> historyObserver;
    double scrolled = 0; ///< of a step of the zoom
};

} // namespace kelo::gtk
