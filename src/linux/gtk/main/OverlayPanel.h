#pragma once

#include "linux/gtk/kit/WidthLimit.h"
#include "platform/SceneGraph.h"

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>

#include <functional>

namespace kelo::gtk {

/// The panel above the page: a button and an optional text below it. Each drawing reuses the
/// widgets, so that the keyboard focus stays where it is.
class OverlayPanel final : public Gtk::Box {
public:
    OverlayPanel();

    void draw(const platform::OverlayDescription& description);
    bool holdsFocus() { return get_focus_child() != nullptr; }

private:
    void shape(const platform::OverlayDescription& description);
    void drawButton(const platform::ButtonDescription& description);
    void drawText(const std::optional<platform::TextDescription>& description);

    Gtk::Image icon;
    Gtk::Label label;
    Gtk::Box caption{Gtk::Orientation::HORIZONTAL, 8};
    WidthLimit labelArea{caption};
    Gtk::Button button;
    Gtk::Label text;
    Glib::RefPtr<Gtk::CssProvider> outline = Gtk::CssProvider::create();
    std::string outlineStyle;
    std::function<void()> action;
    bool restoresFocus = false; ///< the button had the focus when it was disabled
};

} // namespace kelo::gtk
