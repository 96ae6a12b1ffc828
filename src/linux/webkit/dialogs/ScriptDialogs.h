#pragma once

#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/content/EngineHandles.h"

namespace kelo::webkit {

/// The alerts, questions and prompts of a view's pages. The engine shows them; this can close the
/// one that is open. Main thread only.
class ScriptDialogs {
public:
    explicit ScriptDialogs(WebKitWebView* view);
    ScriptDialogs(const ScriptDialogs&) = delete;
    ScriptDialogs& operator=(const ScriptDialogs&) = delete;

    /// Closes the open dialog, if there is one, as if the user had cancelled it.
    void close();

private:
    /// Perhaps answered by now.
    ScriptDialogPointer last;
    gobject::SignalConnection connection;
};

} // namespace kelo::webkit
