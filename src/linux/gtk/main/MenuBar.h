#pragma once

#include "linux/gtk/kit/Redrawing.h"
#include "platform/SceneGraph.h"

#include <giomm/actionmap.h>
#include <giomm/menu.h>
#include <giomm/simpleaction.h>
#include <glibmm/refptr.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::gtk {

/// One command menu of the scene graph as a menu model and the actions behind it, kept up to date
/// as published values change.
class CommandMenuModel {
public:
    /// The actions are added to the map, which belongs to the application (prefix "app"), under
    /// names that begin with the prefix given.
    CommandMenuModel(Gio::ActionMap& actions, std::string actionPrefix, platform::CommandMenu menu);
    CommandMenuModel(const CommandMenuModel&) = delete;
    CommandMenuModel& operator=(const CommandMenuModel&) = delete;

    const std::string& title() const { return menu.title; }
    const Glib::RefPtr<Gio::Menu>& model() const { return model_; }

private:
    void draw();
    void rebuild();
    Glib::RefPtr<Gio::SimpleAction> actionFor(std::size_t index);

    Gio::ActionMap& actionMap;
    std::string actionPrefix;
    platform::CommandMenu menu;
    Glib::RefPtr<Gio::Menu> model_ = Gio::Menu::create();
    platform::Menu items;
    std::vector<std::string> drawnLabels;
    std::vector<Glib::RefPtr<Gio::SimpleAction>> actions;
    std::optional<Redrawing> redrawing;
};

/// The main menu of the program: its own menu, then the command menus in their order.
class MenuBar {
public:
    MenuBar(Gio::ActionMap& actions, const std::vector<platform::CommandMenu>& menus,
            bool hasSettings);

    const Glib::RefPtr<Gio::Menu>& model() const { return model_; }

private:
    Glib::RefPtr<Gio::Menu> model_ = Gio::Menu::create();
    std::vector<std::unique_ptr<CommandMenuModel>> menus;
};

} // namespace kelo::gtk
