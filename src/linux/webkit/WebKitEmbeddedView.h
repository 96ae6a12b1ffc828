#pragma once

#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/WebKitSession.h"
#include "linux/webkit/controls/WebKitPageControls.h"
#include "linux/webkit/navigation/Downloads.h"
#include "linux/webkit/navigation/Retries.h"
#include "linux/webkit/navigation/ShownPage.h"
#include "linux/window/HostedPage.h"
#include "platform/EmbeddedWebView.h"

#include <webkit/webkit.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo::webkit {

class KeptProcesses;
class NavigationPolicy;
class PageLoad;
class PagePermissions;
class ScriptDialogs;
class ScriptMessages;
class SwipeGestures;
class WebKitCookieStore;
class WebProcess;

/// EmbeddedWebView on WebKitGTK. A load that fails or times out shows an error page with the
/// reason. PagePermissions says what the page may do besides.
class WebKitEmbeddedView final : public platform::EmbeddedWebView, public window::HostedPage {
public:
    /// The least size that the widget asks for is the frame's, unless the frame is empty. The view
    /// may outlive the session object.
    WebKitEmbeddedView(const WebKitSession& session, platform::Rectangle frame,
                       const platform::WebViewConfiguration& configuration);
    ~WebKitEmbeddedView() override;
    WebKitEmbeddedView(const WebKitEmbeddedView&) = delete;
    WebKitEmbeddedView& operator=(const WebKitEmbeddedView&) = delete;

    void load(platform::UrlRequest request) override;
    std::optional<Url> url() const override;
    void setNavigationDelegate(std::weak_ptr<platform::NavigationDelegate> newDelegate) override {
        delegate = std::move(newDelegate);
    }
    void setUserInterfaceDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate) override;
    void setAllowsBackForwardNavigationGestures(bool allowed) override;
    void setAllowsMediaCapture(bool allowed) override;
    platform::CookieStore& cookieStore() override;

    GtkWidget* widget() override { return GTK_WIDGET(view.get()); }
    std::optional<std::string> foreignHost() const override;
    void returnToService() override;
    void openInBrowser() override;
    bool answers() const override;
    void reload() override;
    window::PageControls& controls() override { return pageControls; }
    const window::PageControls& controls() const override { return pageControls; }
    void setPageObserver(std::weak_ptr<const std::function<void()>> observer) override {
        pageObserver = std::move(observer);
    }

private:
    void connectLoadSignals();
    void connectPolicySignals();
    template <typename Function>
    void connect(const char* signal, Function* handler);

    void tellPageObserver() const;
    void startLoad(const platform::UrlRequest& request);
    void loadAgain(const std::string& address);
    void loadChanged(WebKitLoadEvent event);
    void loadingChanged();
    void resourceStarted(WebKitWebResource* resource, WebKitURIRequest* request);
    bool loadFailed(const char* address, const GError& error);
    void loadTimedOut();
    bool certificateRefused(const char* address, GTlsCertificate* certificate,
                            GTlsCertificateFlags problems);
    void responsivenessChanged();
    void dialogOpened();
    void dialogAnswered();
    void pageStayed();
    void processEnded();
    void processFailed(WebKitWebProcessTerminationReason reason);
    void showErrorPage(const std::string& heading, const std::string& sentence,
                       const std::string& address,
                       std::optional<std::chrono::seconds> retryIn = std::nullopt);
    void showUnreachable(const std::string& sentence, const std::string& address);
    void tryAgain();

    gobject::GObjectPointer<WebKitNetworkSession> session;
    std::shared_ptr<CertificateProbe> probe;
    std::shared_ptr<const http::TrustedAuthority> authority;
    gobject::GObjectPointer<WebKitWebView> view;
    ExternalOpener openExternally;
    ShownPage shown;
    Downloads downloads;
    WebKitPageControls pageControls;
    Retries retries;
    std::unique_ptr<KeptProcesses> keptProcesses;
    std::unique_ptr<PageLoad> pageLoad;
    std::unique_ptr<WebKitCookieStore> cookies;
    std::unique_ptr<NavigationPolicy> policy;
    std::unique_ptr<ScriptMessages> messages;
    std::unique_ptr<PagePermissions> permissions;
    std::unique_ptr<SwipeGestures> swipes;
    std::unique_ptr<WebProcess> process;
    std::unique_ptr<ScriptDialogs> scriptDialogs;
    std::weak_ptr<platform::NavigationDelegate> delegate;
    std::weak_ptr<const std::function<void()>> pageObserver;
    // Last: disconnected before anything that the handlers use is destroyed.
    std::vector<gobject::SignalConnection> connections;
    gobject::SignalConnection documentConnection;
};

} // namespace kelo::webkit
