#pragma once

#include "linux/gtk/kit/ProgramWindow.h"
#include "linux/gtk/kit/Redrawing.h"
#include "linux/gtk/kit/WidthLimit.h"
#include "platform/SceneGraph.h"

#include <gtkmm/box.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/listbox.h>

#include <functional>
#include <optional>

namespace kelo::gtk {

/// The window of the settings scene: a group of labelled, read-only rows.
class SettingsWindow final : public ProgramWindow {
public:
    SettingsWindow(platform::SettingsScene scene, std::function<void()> closed);

private:
    void draw();

    platform::SettingsScene scene;
    Gtk::HeaderBar header;
    Gtk::Box space;
    WidthLimit limit{space}; ///< a window that cannot be resized grows with a long value otherwise
    Gtk::ListBox rows;
    std::optional<Redrawing> redrawing;
};

} // namespace kelo::gtk
