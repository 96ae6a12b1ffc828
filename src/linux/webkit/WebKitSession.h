#pragma once

#include "linux/downloads/DownloadList.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/http/TrustedAuthority.h"
#include "linux/webkit/dialogs/ScriptDialogs.h"
#include "linux/webkit/navigation/ExternalLinks.h"
#include "linux/webkit/permission/UserConsent.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace kelo::webkit {

class CertificateProbe;
class SteadyCaret;

struct WebKitSessionSettings {
    std::string dataFolder;
    std::string cacheFolder;
    /// Trusted besides the system's trust store, for its hosts.
    std::shared_ptr<const http::TrustedAuthority> authority;
    /// The origin whose pages may post script messages and hold the microphone.
    Url service;
    ExternalOpener openExternally;
    /// Of all views. Null: the session makes one.
    std::shared_ptr<downloads::DownloadList> downloads = nullptr;
    DialogServices dialogs = {};
    /// How the user decides what the service's page may use, in views without a delegate.
    UserChoice userChoice = {};

    /// $XDG_DATA_HOME/kelo/web, $XDG_CACHE_HOME/kelo, the compiled-in authority and service.
    /// The user is not asked for anything.
    static WebKitSessionSettings standard();
};

/// The persistent data store that all web views of the program share: cookies, web storage, cache.
/// Only the user can read the two folders. GTK must be initialised; main thread only.
///
/// The engine runs its web processes in a sandbox (bwrap). Where the kernel forbids that, as in a
/// container without privileges and without user namespaces, the engine itself ends the program at
/// the first load, with "Failed to fully launch dbus-proxy". There is no option to switch it off.
class WebKitSession {
public:
    explicit WebKitSession(WebKitSessionSettings settings = WebKitSessionSettings::standard());

    /// The engine's session for a data store. There is one store, so this is always the same.
    const gobject::GObjectPointer<WebKitNetworkSession>&
    networkSession(platform::WebsiteDataStore store) const;

    const WebKitSessionSettings& settings() const { return settings_; }
    const std::shared_ptr<CertificateProbe>& certificateProbe() const { return probe; }

private:
    WebKitSessionSettings settings_;
    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<CertificateProbe> probe;
    gobject::SignalConnection notificationChoice;
    std::shared_ptr<SteadyCaret> steadyCaret;
};

} // namespace kelo::webkit
