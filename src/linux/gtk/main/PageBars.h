#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/gtk/main/NoticeBar.h"
#include "linux/window/InputWatch.h"

#include <gtkmm/progressbar.h>

#include <optional>
#include <string>

namespace kelo::window {
class HostedPage;
}

namespace kelo::gtk {

/// The bars of a main window that say something about its page.
///
/// While a page is on its way, and is not there quickly, a thin bar over the upper edge shows how
/// much of it has arrived.
/// While the page is not the service's, a bar above it names its host. While the page does not
/// answer, a bar over its upper edge offers to load it again, or to wait; a user who waits is asked
/// again when the page does not take a key or a click. The widget that shows the page is the bars'
/// parent: it draws, moves and removes them.
class PageBars {
public:
    explicit PageBars(Gtk::Widget& parent);
    ~PageBars();
    PageBars(const PageBars&) = delete;
    PageBars& operator=(const PageBars&) = delete;

    /// The bars are about this page from now on; null for none. It must outlive its time here.
    void setPage(window::HostedPage* page);
    /// Call it after an answer of the page has changed.
    void draw();
    /// Call it after more of the page has arrived.
    void drawLoad();
    /// Gives the shown bars their places in an area of this width. Returns the page's upper edge.
    int allocate(int width);
    bool areShown() const { return hangBar.get_visible() || foreignBar.get_visible(); }
    bool holdFocus() { return hangBar.holdsFocus() || foreignBar.holdsFocus(); }
    /// Moves the keyboard from the page to a bar or back. False if no bar is shown.
    bool switchFocus();

private:
    void nameHost(const std::string& host);
    void show(NoticeBar& bar, bool isShown);
    void focusPage();

    window::HostedPage* page = nullptr;
    NoticeBar foreignBar{GTK_ACCESSIBLE_ROLE_GROUP};
    std::optional<std::string> namedHost; ///< by the bar
    NoticeBar hangBar{GTK_ACCESSIBLE_ROLE_ALERT};
    Gtk::ProgressBar loadBar;
    gobject::ScheduledJob loadBarAppears;
    bool userWaits = false;                  ///< for a page that does not answer
    std::optional<window::InputWatch> input; ///< of the page
};

} // namespace kelo::gtk
