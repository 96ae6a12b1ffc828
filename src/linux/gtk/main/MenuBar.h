#pragma once

#include "linux/gtk/kit/Redrawing.h"
#include "linux/gtk/windows/ShortcutsWindow.h"
#include "platform/SceneGraph.h"

#include <giomm/actionmap.h>
#include <giomm/menu.h>
#include <giomm/simpleaction.h>
#include <glibmm/refptr.h>
#include <gtkmm/widget.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::gtk {

/// The application's actions, as menus need them.
struct MenuActions {
    /// The map with the prefix "app". Must outlive the menus.
    Gio::ActionMap& map;
    /// Sets the accelerator ("<Control>q") of the action with the full name ("app.quit"). An empty
    /// accelerator removes it.
    std::function<void(const std::string& action, const std::string& accelerator)> setAccelerator;
};

/// A menu of the scene graph as a menu model and its actions. It follows the published values.
/// Destroying it removes the actions. Main thread only.
class CommandMenuModel {
public:
    /// The names of the actions begin with the prefix, which must be unique among the menus.
    CommandMenuModel(MenuActions actions, std::string actionPrefix, platform::CommandMenu menu);
    ~CommandMenuModel();
    CommandMenuModel(const CommandMenuModel&) = delete;
    CommandMenuModel& operator=(const CommandMenuModel&) = delete;

    const std::string& title() const { return menu.title; }
    const Glib::RefPtr<Gio::Menu>& model() const { return model_; }
    /// The keys of the menu's entries, under its title.
    ShortcutGroup shortcuts() const;

private:
    struct EntryAction {
        Glib::RefPtr<Gio::SimpleAction> action;
        std::string accelerator;
    };

    void draw();
    void rebuild();
    void drawAction(std::size_t index);
    EntryAction& actionFor(std::size_t index);
    const platform::MenuItem* itemAt(std::size_t index) const;
    std::string actionName(std::size_t index) const;

    MenuActions actions;
    std::string actionPrefix;
    platform::CommandMenu menu;
    Glib::RefPtr<Gio::Menu> model_ = Gio::Menu::create();
    platform::Menu items;
    std::vector<std::string> drawnLabels;
    std::vector<EntryAction> entryActions;
    std::optional<Redrawing> redrawing;
};

/// The main menu: menus side by side, in the order of append(). Main thread only.
class MenuBar {
public:
    explicit MenuBar(MenuActions actions) : actions(std::move(actions)) {}

    void append(platform::CommandMenu menu);
    /// Appends a menu whose actions and keys are somebody else's, under the group's title.
    void append(ShortcutGroup keys, const Glib::RefPtr<Gio::MenuModel>& menu);

    const Glib::RefPtr<Gio::Menu>& model() const { return model_; }
    /// The keys of the entries, a group for each menu.
    std::vector<ShortcutGroup> shortcuts() const;

private:
    MenuActions actions;
    Glib::RefPtr<Gio::Menu> model_ = Gio::Menu::create();
    std::vector<std::unique_ptr<CommandMenuModel>> menus;
    std::vector<ShortcutGroup> otherKeys;
};

/// Has the widget that shows a menu bar leave the keyboard where it is while no menu is open. It
/// would take it as soon as the pointer passes over a heading.
void leaveKeyboardAlone(Gtk::Widget& menuBar);

/// Makes the widget that shows a menu bar tell assistive technology what its menus are called, and
/// the shortcuts of their entries.
void makeAccessible(Gtk::Widget& menuBar);

} // namespace kelo::gtk
