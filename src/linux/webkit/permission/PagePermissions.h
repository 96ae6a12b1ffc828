#pragma once

#include "linux/webkit/permission/UserConsent.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>

namespace kelo::webkit {

/// What the pages of a view may do besides showing themselves: use the microphone and the camera,
/// if the delegate or the user grants it, and show notifications if the user does. Every other
/// permission is denied. Main thread only.
class PagePermissions {
public:
    /// The views must outlive this object.
    PagePermissions(platform::EmbeddedWebView& view, WebKitWebView* native, const Url& service,
                    const UserChoice& choice);
    ~PagePermissions();
    PagePermissions(const PagePermissions&) = delete;
    PagePermissions& operator=(const PagePermissions&) = delete;

    /// From now on the delegate decides about microphone and camera, and no longer the user.
    void setDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate);
    /// Whether pages may use microphone and camera at all.
    void setAllowed(bool allowed);

    /// The main frame begins to navigate to another document.
    void navigationStarted();
    /// The navigation has ended, with or without another page.
    void navigationEnded();
    /// A page of this address is shown now; null for a page without permissions.
    void pageChanged(const char* address);

private:
    struct State;

    const std::unique_ptr<State> state;
};

} // namespace kelo::webkit
