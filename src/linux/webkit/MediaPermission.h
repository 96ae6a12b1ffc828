#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>

namespace kelo::webkit {

/// Whether the page of a view may use the microphone and the camera. The delegate decides, and is
/// asked in the name of the page that is shown, since the engine does not tell which frame asks;
/// that no frame of another origin can ask is the care of ForeignFrames. One answer holds for as
/// long as the page is shown.
///
/// Refused without a question: everything as long as there is no delegate; capturing the screen;
/// and whatever is asked while a navigation is under way, when it would not be clear for which
/// page. A delegate that answers "prompt" refuses, too: there is no window here to ask the user
/// with.
class MediaPermission {
public:
    /// The view outlives this. Its pages do not find navigator.mediaDevices until there is a
    /// delegate, from the next page on.
    MediaPermission(platform::EmbeddedWebView& view, WebKitWebView* native, const Url& service);

    void setDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate);

    /// A navigation of the main frame to another document.
    void navigationStarted();
    /// The navigation is over, whether or not it brought another page.
    void navigationEnded();
    /// Another page is there, of this address; null for none that may have permissions.
    void pageChanged(const char* address);

    void decide(WebKitUserMediaPermissionRequest* request);
    /// What a page learns that asks what it may: that it has to try, or that it need not.
    WebKitPermissionState stateFor(WebKitPermissionStateQuery* query) const;

private:
    struct Page;
    class Decision;

    platform::EmbeddedWebView& view;
    WebKitWebView* native;
    Url service;
    std::weak_ptr<platform::UserInterfaceDelegate> delegate;
    bool framesGuarded = false;
    std::shared_ptr<Page> page;
};

} // namespace kelo::webkit
