#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <vector>

namespace kelo::webkit {

/// The handlers that pages find below window.webkit.messageHandlers. Only a page of the service, in
/// the main frame, finds any; messages of one page arrive in the order they were posted.
///
/// The engine would offer its handlers to every frame, and does not say which one posted. So they
/// are registered in a script world of our own, which code of pages cannot reach, whatever frame or
/// window it makes. Two scripts lead there, and both run in main frames with an address of the
/// service only: one in the page's world, which defines the handlers that the page sees, and one in
/// ours, which posts. They meet in events of the window they share. No other origin can dispatch an
/// event there; frames of the same origin can, as they can do all else that the page can.
class ScriptMessages {
public:
    /// The view outlives this.
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
