#include "linux/gtk/dialogs/DialogText.h"

#include "linux/gtk/kit/BalancedText.h"

#include <gtkmm/adjustment.h>

namespace kelo::gtk {

void setAccessibleDescription(Gtk::Window& dialog, const std::string& text) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(dialog.gobj()),
                                   GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, text.c_str(), -1);
}

Gtk::Box* makeButtonRow() {
    auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
    row->set_homogeneous();
    row->add_css_class("kelo-buttons");
    return row;
}

Gtk::Label* makeDialogText(const std::string& text, const char* cssClass) {
    auto* label = Gtk::make_managed<Gtk::Label>(text);
    wrapLines(*label);
    label->set_justify(Gtk::Justification::CENTER);
    label->add_css_class(cssClass);
    balanceLines(*label, dialogTextWidth);
    return label;
}

Gtk::ScrolledWindow* makeDialogScroll(Gtk::Widget& text, int tallest) {
    auto* scroll = Gtk::make_managed<Gtk::ScrolledWindow>();
    scroll->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroll->set_propagate_natural_width();
    scroll->set_propagate_natural_height();
    // Always seen, because nothing else says that the text goes on.
    scroll->set_overlay_scrolling(false);
    scroll->set_max_content_height(tallest);
    scroll->set_child(text);
    // The keyboard stops at the text only where there is something to scroll.
    scroll->set_focusable(false);
    const auto place = scroll->get_vadjustment();
    place->signal_changed().connect([scroll, adjustment = place.get()] {
        scroll->set_focusable(adjustment->get_upper() > adjustment->get_page_size());
    });
    return scroll;
}

} // namespace kelo::gtk
