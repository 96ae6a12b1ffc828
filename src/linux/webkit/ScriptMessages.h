#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <vector>

namespace kelo::webkit {

/// The handlers below window.webkit.messageHandlers. Only pages of the service have them, and only
/// in the main frame. The messages of one page arrive in the order in which they were posted.
///
/// The engine offers a handler to every frame, and does not say which frame posted. So the native
/// handlers are registered in a script world of the program's own. Scripts of pages cannot reach
/// that world, whatever frame or window they create. Two document-start scripts connect the worlds.
/// Both run only in the main frame, and only for the service. The script in the page's world
/// defines the handlers that the page sees; each dispatches an event on the window. The script in
/// the program's world receives the event and posts to the native handler. Cross-origin frames
/// cannot dispatch events on that window. Same-origin frames can, but they have full access to the
/// page anyway.
class ScriptMessages {
public:
    /// The view must outlive this object. Handler names consist of letters, digits and "_"; any
    /// other name ends the program.
    ScriptMessages(platform::EmbeddedWebView& view, WebKitUserContentManager* manager,
                   const Url& service,
                   const std::vector<platform::ScriptMessageRegistration>& registrations);
    ~ScriptMessages();
    ScriptMessages(const ScriptMessages&) = delete;
    ScriptMessages& operator=(const ScriptMessages&) = delete;

private:
    struct Channel;

    void open(const platform::ScriptMessageRegistration& registration, const Url& service);

    platform::EmbeddedWebView& view;
    gobject::GObjectPointer<WebKitUserContentManager> manager;
    std::vector<std::unique_ptr<Channel>> channels;
};

} // namespace kelo::webkit
