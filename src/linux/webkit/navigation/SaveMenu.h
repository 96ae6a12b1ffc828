#pragma once

#include "linux/gobject/SignalHandler.h"

#include <webkit/webkit.h>

#include <functional>
#include <memory>
#include <string>

namespace kelo::webkit {

/// Kelo's own entries for saving a link, a picture, a video or a sound, in place of the engine's,
/// in the menus of a view's pages. Main thread only.
class SaveMenu {
public:
    using Save = std::function<void(const std::string& address)>;

    /// save: called with what the entry leads to, when the user chooses it; never after this is
    /// destroyed.
    SaveMenu(WebKitWebView* view, Save save);

private:
    void opened(WebKitContextMenu* menu, WebKitHitTestResult* place);
    WebKitContextMenuItem* makeEntry(const std::string& label, const char* address);

    std::shared_ptr<Save> save; ///< entries hold it weakly
    gobject::SignalConnection connection;
};

} // namespace kelo::webkit
