#include "linux/gtk/dialogs/SecretEntry.h"

#include "linux/gtk/dialogs/MaskedEntry.h"
#include "linux/gtk/kit/Accessibility.h"

#include <gtkmm/entry.h>
#include <gtkmm/window.h>

namespace kelo::gtk {

namespace {

Gtk::Widget* makeLine(SecretEntry::Display display) {
    if (display == SecretEntry::Display::masked)
        return Gtk::manage(Glib::wrap(makeMaskedEntry()));
    return Gtk::make_managed<Gtk::Entry>();
}

} // namespace

SecretEntry::SecretEntry(Display display) : display(display), line(makeLine(display)) {
    line->set_hexpand();
    // The undo history would keep a copy of the text.
    g_object_set(line->gobj(), "activates-default", TRUE, "enable-undo", FALSE, nullptr);
    append(*line);
}

SecretEntry::~SecretEntry() {
    take();
    // Otherwise the toolkit's masked entry would be told about the lost focus after its
    // destruction.
    auto* window = dynamic_cast<Gtk::Window*>(get_root());
    auto* focus = window ? window->get_focus() : nullptr;
    if (focus && focus->is_ancestor(*this))
        window->unset_focus();
    if (auto* place = dynamic_cast<Gtk::Box*>(get_parent()))
        place->remove(*this);
}

void SecretEntry::setPlaceholder(const std::string& text) {
    g_object_set(line->gobj(), "placeholder-text", text.c_str(), nullptr);
}

void SecretEntry::setName(const std::string& name) {
    setAccessibleName(*line, name);
}

void SecretEntry::focus() {
    line->grab_focus();
}

GtkEditable* SecretEntry::text() const {
    return display == Display::masked ? ownTextOf(line->gobj()) : GTK_EDITABLE(line->gobj());
}

bool SecretEntry::isEmpty() const {
    return *gtk_editable_get_text(text()) == '\0';
}

SecretText SecretEntry::take() {
    // Read directly from the toolkit's buffer, which is overwritten when the text is replaced. A
    // ustring would be another copy.
    SecretText taken{std::string_view(gtk_editable_get_text(text()))};
    gtk_editable_set_text(text(), "");
    return taken;
}

} // namespace kelo::gtk
