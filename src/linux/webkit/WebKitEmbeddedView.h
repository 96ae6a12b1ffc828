#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/webkit/MediaPermission.h"
#include "linux/webkit/NavigationPolicy.h"
#include "linux/webkit/ScriptMessages.h"
#include "linux/webkit/WebKitCookieStore.h"
#include "linux/webkit/WebKitSession.h"
#include "linux/window/HostedWidget.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace kelo::webkit {

/// EmbeddedWebView on WebKitGTK. The page may use the microphone and the camera if the user
/// interface delegate says so, and neither the location nor anything else that needs a permission.
/// A load that fails shows a page of ours with the reason.
class WebKitEmbeddedView final : public platform::EmbeddedWebView, public window::HostedWidget {
public:
    WebKitEmbeddedView(gobject::GObjectPointer<WebKitNetworkSession> session,
                       std::shared_ptr<CertificateProbe> probe,
                       const WebKitSessionSettings& settings, platform::Rectangle frame,
                       const platform::WebViewConfiguration& configuration);
    ~WebKitEmbeddedView() override;
    WebKitEmbeddedView(const WebKitEmbeddedView&) = delete;
    WebKitEmbeddedView& operator=(const WebKitEmbeddedView&) = delete;

    /// GET only, and the engine's own time-out: it offers no other.
    void load(platform::UrlRequest request) override;
    std::optional<Url> url() const override;
    void setNavigationDelegate(std::weak_ptr<platform::NavigationDelegate> delegate) override;
    void setUserInterfaceDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate) override;
    void setAllowsBackForwardNavigationGestures(bool allowed) override;
    platform::CookieStore& cookieStore() override { return cookies; }

    GtkWidget* widget() override { return GTK_WIDGET(view.get()); }

private:
    /// What the engine is at.
    enum class Stage {
        page,   ///< a page of the web, on its way or shown
        failed, ///< that page will not come
        notice, ///< our own page about it
    };

    void connectSignals();
    void loadChanged(WebKitLoadEvent event);
    bool loadFailed(const char* address, const GError& error);
    bool certificateRefused(const char* address, GTlsCertificate* certificate,
                            GTlsCertificateFlags problems);
    void processEnded(WebKitWebProcessTerminationReason reason);
    void startLoad(const gobject::GObjectPointer<WebKitURIRequest>& request);
    void responsivenessChanged();
    void permissionRequested(WebKitPermissionRequest* request);
    void showNotice(const std::string& heading, const std::string& sentence,
                    const std::string& address);
    void tryAgain();

    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<CertificateProbe> probe;
    std::shared_ptr<const http::TrustedAuthority> authority;
    gobject::GObjectPointer<WebKitWebView> view;
    WebKitCookieStore cookies;
    NavigationPolicy policy;
    ScriptMessages messages;
    MediaPermission mediaPermission;
    std::weak_ptr<platform::NavigationDelegate> delegate;
    Stage stage = Stage::page;
    bool noticeAnnounced = false;
    std::string failedAddress;
    /// A page is there, so the process that shows it has answered before.
    bool pageShown = false;
    /// What was asked of that process, until it has begun with it.
    gobject::GObjectPointer<WebKitURIRequest> unheardRequest;
    /// A certificate was let through for the load that is on its way.
    bool certificateTried = false;
    /// How often that load was repeated because the engine lost it, through no fault of the
    /// service.
    int lossesForgiven = 0;
};

} // namespace kelo::webkit
