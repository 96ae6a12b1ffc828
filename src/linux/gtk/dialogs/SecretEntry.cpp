#include "linux/gtk/dialogs/SecretEntry.h"

#include "linux/gtk/dialogs/MaskedEntry.h"
#include "linux/gtk/kit/Accessibility.h"

#include <gtkmm/entry.h>
#include <gtkmm/window.h>

#include <vector>

namespace kelo::gtk {

namespace {

Gtk::Widget* makeLine(SecretEntry::Display display) {
    if (display == SecretEntry::Display::masked)
        return Gtk::manage(Glib::wrap(makeMaskedEntry()));
    return Gtk::make_managed<Gtk::Entry>();
}

// The toolkit tells the accessibility bus what is deleted, and copies of such a message stay in
// memory.
void clearUnheard(GtkEditable* text) {
    GtkEditable* const teller = gtk_editable_get_delegate(text);
    constexpr auto stillHeard =
        static_cast<GSignalMatchType>(G_SIGNAL_MATCH_ID | G_SIGNAL_MATCH_UNBLOCKED);
    const guint deletion = g_signal_lookup("delete-text", GTK_TYPE_EDITABLE);
    std::vector<gulong> blocked;
    while (const gulong handler =
               g_signal_handler_find(teller, stillHeard, deletion, 0, nullptr, nullptr, nullptr)) {
        g_signal_handler_block(teller, handler);
        blocked.push_back(handler);
    }
    gtk_editable_set_text(text, "");
    for (const gulong handler : blocked)
        g_signal_handler_unblock(teller, handler);
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
    if (display == Display::visible)
        clearUnheard(text());
    else
        gtk_editable_set_text(text(), "");
    return taken;
}

} // namespace kelo::gtk
