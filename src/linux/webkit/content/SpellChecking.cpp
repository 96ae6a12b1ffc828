#include "linux/webkit/content/SpellChecking.h"

#include "base/async/MainLoop.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/webkit/content/UserLanguages.h"

#include <vector>

namespace kelo::webkit {

namespace {

void checkSpelling(WebKitWebContext* context) {
    const auto languages = userLanguages();
    // Without a language, the engine would take one of its own choice.
    if (languages.empty() || webkit_web_context_get_spell_checking_enabled(context))
        return;
    std::vector<const char*> names;
    for (const std::string& language : languages)
        names.push_back(language.c_str());
    names.push_back(nullptr);
    webkit_web_context_set_spell_checking_languages(context, names.data());
    webkit_web_context_set_spell_checking_enabled(context, TRUE);
}

// The engine looks at a word when it ends, so the first one is in time.
void textCame(WebKitWebView* view) {
    WebKitWebContext* const context = webkit_web_view_get_context(view);
    if (webkit_web_context_get_spell_checking_enabled(context))
        return;
    // The dictionaries take longer than a frame. The letter is not to wait for them.
    MainLoop::main().post([context = gobject::GObjectPointer<WebKitWebContext>::share(context)] {
        checkSpelling(context.get());
    });
}

gboolean keyPressed(WebKitWebView* view, guint key) {
    if (gdk_keyval_to_unicode(key) != 0)
        textCame(view);
    return FALSE;
}

} // namespace

void checkSpellingOfText(WebKitWebView* view) {
    GtkEventController* const keys = gtk_event_controller_key_new();
    // The engine would keep the key from coming any further.
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect_object(keys, "key-pressed", G_CALLBACK(keyPressed), view, G_CONNECT_SWAPPED);
    gtk_widget_add_controller(GTK_WIDGET(view), keys);
    // What a keyboard on the screen writes comes without keys.
    WebKitInputMethodContext* const input = webkit_web_view_get_input_method_context(view);
    for (const char* signal : {"preedit-started", "committed"})
        g_signal_connect_object(input, signal, G_CALLBACK(textCame), view, G_CONNECT_SWAPPED);
}

} // namespace kelo::webkit
