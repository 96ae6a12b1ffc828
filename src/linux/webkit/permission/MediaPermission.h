#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/permission/UserConsent.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>

namespace kelo::webkit {

/// Decides whether the page of a view may use the microphone and the camera: the delegate does;
/// where there never was one, the user does for the service's page, and other pages are denied. The
/// delegate is given the origin of the current page, since the engine does not say which frame
/// asks; CrossOriginFrames keeps cross-origin frames from asking. A decision holds until the page
/// changes.
///
/// Denied without asking anybody: every request while capture is not allowed; screen capture; and
/// requests during a navigation, when it is unclear which page asks. A delegate that answers
/// "prompt" denies, too.
///
/// What the user allows, the page has while a window shows it. It ends when the window is closed
/// and when the user takes it back.
class MediaPermission {
public:
    /// The view and the user's consent must outlive this object. Without a choice of the user,
    /// navigator.mediaDevices exists only in pages that are loaded after a delegate was set.
    MediaPermission(platform::EmbeddedWebView& view, WebKitWebView* native, const Url& service,
                    UserConsent& consent, const UserChoice& choice);

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
    bool delegateDecides() const;
    /// Whether the user decides about the shown page: it is the service's and not being left, and
    /// there never was a delegate.
    bool isUsersPage() const;

private:
    struct Page;
    class Decision;

    void offerDevices();
    void askDelegate(platform::UserInterfaceDelegate& decider, platform::MediaCaptureType type,
                     std::shared_ptr<Decision> decision);
    bool mayCapture(permission::Capability device) const;
    void stopUnlessAllowed();

    platform::EmbeddedWebView& view;
    WebKitWebView* native;
    Url service;
    UserConsent& consent;
    std::weak_ptr<platform::UserInterfaceDelegate> delegate;
    bool userDecides; ///< until a delegate does
    bool devicesOffered = false;
    bool isAllowed = true;
    std::shared_ptr<Page> page;
    gobject::SignalConnection microphoneConnection;
    gobject::SignalConnection cameraConnection;
    gobject::SignalConnection unmapConnection;
    Observation choiceObservation;
    gobject::ScheduledJob choiceChanged;
    gobject::ScheduledJob stopAgain;
};

} // namespace kelo::webkit
