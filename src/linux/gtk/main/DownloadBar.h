#pragma once

#include "linux/downloads/DownloadList.h"
#include "linux/gtk/kit/HeightLimit.h"

#include <gtkmm/box.h>
#include <gtkmm/button.h>

#include <sigc++/connection.h>

#include <functional>
#include <map>
#include <memory>

namespace kelo::gtk {

class DownloadRow;

/// The bar with the downloads, one below the other. It is there while there are any, and never
/// takes the keyboard by itself.
class DownloadBar final : public Gtk::Box {
public:
    /// leave: gives the keyboard to the page.
    DownloadBar(std::shared_ptr<downloads::DownloadList> list, std::function<void()> leave);
    ~DownloadBar() override;

    bool holdsFocus() { return get_focus_child() != nullptr; }
    /// Gives the keyboard to the first button.
    void takeFocus();

private:
    class Observer;

    void draw();
    void drawRows();
    void keepFocus(bool hadFocus);
    void followProgress();

    const std::shared_ptr<downloads::DownloadList> list;
    std::function<void()> leave;
    Gtk::Box rows{Gtk::Orientation::VERTICAL};
    HeightLimit scroll{rows};
    Gtk::Button closeButton;
    std::map<unsigned, std::unique_ptr<DownloadRow>> byIdentifier;
    std::shared_ptr<downloads::DownloadObserver> observer;
    sigc::connection clock; ///< while a download runs
};

} // namespace kelo::gtk
