#include "linux/gtk/kit/SecretEntry.h"

#include "linux/gtk/kit/Accessibility.h"

#include <gtkmm/entry.h>
#include <gtkmm/passwordentry.h>
#include <gtkmm/window.h>

namespace kelo::gtk {

namespace {

Gtk::Widget* makeLine(SecretEntry::Display display) {
    if (display == SecretEntry::Display::masked)
        return Gtk::make_managed<Gtk::PasswordEntry>();
    return Gtk::make_managed<Gtk::Entry>();
}

} // namespace

SecretEntry::SecretEntry(Display display) : display(display), line(makeLine(display)) {
    line->set_hexpand();
    // The undo history would keep what was typed.
    g_object_set(line->gobj(), "activates-default", TRUE, "enable-undo", FALSE, nullptr);
    append(*line);
}

SecretEntry::~SecretEntry() {
    take();
    // The toolkit's masked entry would hear of the loss of the focus after its end.
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

SecretText SecretEntry::take() {
    auto* editable = GTK_EDITABLE(line->gobj());
    // Straight out of the toolkit's own buffer, which it overwrites when the text is replaced.
    SecretText text{std::string_view(gtk_editable_get_text(editable))};
    gtk_editable_set_text(editable, "");
    return text;
}

} // namespace kelo::gtk
