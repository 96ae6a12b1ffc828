#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/SignalHandler.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>

namespace kelo::webkit {

/// Decides whether the page of a view may use the microphone and the camera, by asking the
/// delegate. The delegate is given the origin of the current page, since the engine does not say
/// which frame asks; CrossOriginFrames keeps cross-origin frames from asking. A decision holds
/// until the page changes.
///
/// Denied without asking the delegate: every request while there is no delegate, and while capture
/// is not allowed; screen capture; and requests during a navigation, when it is unclear which page
/// asks. "prompt" denies, too: the program has no window to ask the user with.
class MediaPermission {
public:
    /// The view must outlive this object. navigator.mediaDevices exists only in pages that are
    /// loaded after a delegate was set.
    MediaPermission(platform::EmbeddedWebView& view, WebKitWebView* native, const Url& service);

    void setDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate);
    /// Allowed at first. While it is not, what the page captures is stopped as soon as it begins,
    /// and requests that wait for a decision are denied.
    void setAllowed(bool allowed);

    /// The main frame begins to navigate to another document.
    void navigationStarted();
    /// The navigation has ended, with or without another page.
    void navigationEnded();
    /// A page of this address is shown now; null for a page without permissions.
    void pageChanged(const char* address);

    void decide(WebKitUserMediaPermissionRequest* request);
    /// The answer to navigator.permissions.query(): "prompt" or "denied".
    WebKitPermissionState stateFor(WebKitPermissionStateQuery* query) const;

private:
    struct Page;
    class Decision;

    void stopUnlessAllowed() const;

    platform::EmbeddedWebView& view;
    WebKitWebView* native;
    Url service;
    std::weak_ptr<platform::UserInterfaceDelegate> delegate;
    bool crossOriginFramesDenied = false;
    bool isAllowed = true;
    std::shared_ptr<Page> page;
    gobject::SignalConnection microphoneConnection;
    gobject::SignalConnection cameraConnection;
};

} // namespace kelo::webkit
