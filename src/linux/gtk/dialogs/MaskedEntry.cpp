#include "linux/gtk/dialogs/MaskedEntry.h"

#include <string>

namespace kelo::gtk {

namespace {

constexpr const char* mask = "●";
constexpr const char* masksKey = "kelo-masks";

// The toolkit (GTK 4.8) announces each change of an entry's text in clear, in a handler of these
// two signals that it connects when the entry gets onto the screen. Ours are older, so they are
// called first, and what they stop does not get to the toolkit's.

void stopAfterInsertion(GtkEditable* text, char*, int, int*, gpointer) {
    g_signal_stop_emission_by_name(text, "insert-text");
}

// The toolkit announces a deletion before it happens, so it has to happen here.
void deleteAndStop(GtkEditable* text, int start, int end, gpointer) {
    GTK_EDITABLE_GET_IFACE(text)->delete_text(text, start, end);
    g_signal_stop_emission_by_name(text, "delete-text");
}

// What the toolkit answers and copies for assistive technology, it takes from here.
const char* masksOf(GtkEditable* entry) {
    const auto length = g_utf8_strlen(gtk_editable_get_text(gtk_editable_get_delegate(entry)), -1);
    std::string masks;
    for (glong index = 0; index < length; ++index)
        masks += mask;
    char* const kept = g_strdup(masks.c_str());
    g_object_set_data_full(G_OBJECT(entry), masksKey, kept, g_free);
    return kept;
}

void initialiseEditable(gpointer interface, gpointer) {
    static_cast<GtkEditableInterface*>(interface)->get_text = masksOf;
}

GType maskedEntryType() {
    static const GType type = [] {
        GTypeQuery parent;
        g_type_query(GTK_TYPE_PASSWORD_ENTRY, &parent);
        const GType made = g_type_register_static_simple(
            GTK_TYPE_PASSWORD_ENTRY, "KeloMaskedEntry", parent.class_size, nullptr,
            parent.instance_size, nullptr, static_cast<GTypeFlags>(0));
        const GInterfaceInfo editable{initialiseEditable, nullptr, nullptr};
        g_type_add_interface_static(made, GTK_TYPE_EDITABLE, &editable);
        return made;
    }();
    return type;
}

} // namespace

GtkWidget* makeMaskedEntry() {
    auto* entry = GTK_WIDGET(g_object_new(maskedEntryType(), nullptr));
    auto* text = ownTextOf(entry);
    g_signal_connect_after(text, "insert-text", G_CALLBACK(stopAfterInsertion), nullptr);
    g_signal_connect(text, "delete-text", G_CALLBACK(deleteAndStop), nullptr);
    return entry;
}

GtkEditable* ownTextOf(GtkWidget* maskedEntry) {
    return gtk_editable_get_delegate(GTK_EDITABLE(maskedEntry));
}

} // namespace kelo::gtk
