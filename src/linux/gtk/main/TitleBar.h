#pragma once

#include <giomm/menumodel.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/label.h>
#include <gtkmm/popovermenubar.h>

namespace kelo::window {
class HostedPage;
}

namespace kelo::gtk {

/// The title bar of a main window: what leads back and loads again, the main menu, and what the
/// shown page calls itself. A page of another host is named by its host as well.
class TitleBar final : public Gtk::HeaderBar {
public:
    explicit TitleBar(const Glib::RefPtr<Gio::MenuModel>& menu);

    Gtk::PopoverMenuBar& mainMenu() { return menuBar; }
    /// Names the page here, and in the title of the window that has this title bar. Null for none.
    void draw(const window::HostedPage* page);

private:
    void addButton(Gtk::Button& button, const char* icon, const char* name, const char* action);

    Gtk::Button back;
    Gtk::Button reload;
    Gtk::PopoverMenuBar menuBar;
    Gtk::Box titles{Gtk::Orientation::VERTICAL};
    Gtk::Label title;
    Gtk::Label host;
};

} // namespace kelo::gtk
