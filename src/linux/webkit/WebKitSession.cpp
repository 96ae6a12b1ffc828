#include "linux/webkit/WebKitSession.h"

#include "base/Invariant.h"
#include "deployment/Deployment.h"
#include "linux/webkit/Downloads.h"
#include "linux/webkit/WebKitEmbeddedView.h"

#include <glib/gstdio.h>

namespace kelo::webkit {

namespace {

std::string inFolder(const char* base, const char* name) {
    const gobject::GText path(g_build_filename(base, name, nullptr));
    return path.get();
}

// The engine writes its files with the usual rights, so the folder has to keep others out.
void makePrivateFolder(const std::string& path) {
    if (g_mkdir_with_parents(path.c_str(), 0700) != 0 || g_chmod(path.c_str(), 0700) != 0)
        g_warning("The folder %s could not be made for this user alone: %s", path.c_str(),
                  g_strerror(errno));
}

Url compiledInService() {
    if (const auto url = Url::parse(deployment::serviceOrigin))
        return *url;
    invariantBroken("the compiled-in service origin is a URL");
}

} // namespace

WebKitSessionSettings WebKitSessionSettings::standard() {
    const std::string data = inFolder(g_get_user_data_dir(), "kelo");
    return {inFolder(data.c_str(), "web"), inFolder(g_get_user_cache_dir(), "kelo"),
            http::TrustedAuthority::compiledIn(), compiledInService(), openWithDefaultProgram};
}

WebKitSession::WebKitSession(WebKitSessionSettings given) : settings(std::move(given)) {
    makePrivateFolder(settings.dataFolder);
    makePrivateFolder(settings.cacheFolder);
    session = gobject::GObjectPointer<WebKitNetworkSession>::adopt(
        webkit_network_session_new(settings.dataFolder.c_str(), settings.cacheFolder.c_str()));
    // Before the first load, or nothing is kept.
    webkit_cookie_manager_set_persistent_storage(
        webkit_network_session_get_cookie_manager(session.get()),
        inFolder(settings.dataFolder.c_str(), "cookies.sqlite").c_str(),
        WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    // Passwords of HTTP authentication would go to the keyring unasked.
    webkit_network_session_set_persistent_credential_storage_enabled(session.get(), FALSE);
    webkit_network_session_set_tls_errors_policy(session.get(), WEBKIT_TLS_ERRORS_POLICY_FAIL);
    saveDownloadsOf(session.get());
    probe = std::make_shared<CertificateProbe>(session, settings.authority);
}

std::shared_ptr<platform::EmbeddedWebView>
WebKitSession::makeWebView(platform::Rectangle frame,
                           platform::WebViewConfiguration configuration) {
    return std::make_shared<WebKitEmbeddedView>(session, probe, settings, frame, configuration);
}

} // namespace kelo::webkit
