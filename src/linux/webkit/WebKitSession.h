#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/http/TrustedAuthority.h"
#include "linux/webkit/CertificateProbe.h"
#include "linux/webkit/ExternalLinks.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace kelo::webkit {

/// Where the web views keep what, whom they trust, and whom they show.
struct WebKitSessionSettings {
    std::string dataFolder;
    std::string cacheFolder;
    std::shared_ptr<const http::TrustedAuthority> authority;
    Url service;
    ExternalOpener openExternally;

    /// $XDG_DATA_HOME/kelo/web, $XDG_CACHE_HOME/kelo, the compiled-in authority and service.
    static WebKitSessionSettings standard();
};

/// The one data store that all web views of the program share: cookies, web storage, cache. Both
/// folders are made for their owner alone. GTK must be up; main thread only.
///
/// The engine runs its web processes in a sandbox (bwrap). Where the kernel forbids that, as in a
/// container without privileges and without user namespaces, the engine itself ends the program at
/// the first load, with "Failed to fully launch dbus-proxy". There is no switch here to do without.
class WebKitSession {
public:
    explicit WebKitSession(WebKitSessionSettings settings = WebKitSessionSettings::standard());

    /// The result is a HostedWidget, too. A frame that is not empty is the least size the widget
    /// asks for. The view may outlive the session object.
    std::shared_ptr<platform::EmbeddedWebView>
    makeWebView(platform::Rectangle frame, platform::WebViewConfiguration configuration);

    WebKitNetworkSession* networkSession() const { return session.get(); }

private:
    WebKitSessionSettings settings;
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<CertificateProbe> probe;
};

} // namespace kelo::webkit
