#include "linux/webkit/ScriptDialogs.h"

#include <utility>

namespace kelo::webkit {

ScriptDialogs::ScriptDialogs(WebKitWebView* view)
    : connection(gobject::connectSignal(
          view, "script-dialog",
          +[](WebKitWebView*, WebKitScriptDialog* dialog, ScriptDialogs* self) -> gboolean {
              self->last.reset(webkit_script_dialog_ref(dialog));
              return FALSE;
          },
          this)) {}

void ScriptDialogs::close() {
    if (const auto dialog = std::exchange(last, nullptr))
        webkit_script_dialog_close(dialog.get());
}

} // namespace kelo::webkit
