#include "linux/webkit/WebKitSession.h"

#include "base/Invariant.h"
#include "deployment/Deployment.h"
#include "linux/webkit/CertificateProbe.h"
#include "linux/webkit/SteadyCaret.h"
#include "linux/webkit/content/UserLanguages.h"
#include "linux/webkit/navigation/Downloads.h"
#include "linux/webkit/navigation/SavedDownload.h"
#include "linux/webkit/permission/WebNotifications.h"

#include <glib/gstdio.h>

namespace kelo::webkit {

namespace {

std::string inFolder(const char* base, const char* name) {
    const gobject::GText path(g_build_filename(base, name, nullptr));
    return path.get();
}

// The engine creates files that others may read, so the folder has to keep them out.
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
    return {inFolder(data.c_str(), "web"),
            inFolder(g_get_user_cache_dir(), "kelo"),
            http::TrustedAuthority::compiledIn(),
            compiledInService(),
            openWithDefaultProgram,
            {}};
}

WebKitSession::WebKitSession(WebKitSessionSettings given)
    : settings_(std::move(given)), steadyCaret(std::make_shared<SteadyCaret>()) {
    makePrivateFolder(settings_.dataFolder);
    makePrivateFolder(settings_.cacheFolder);
    announceLanguages(webkit_web_context_get_default());
    session = gobject::GObjectPointer<WebKitNetworkSession>::adopt(
        webkit_network_session_new(settings_.dataFolder.c_str(), settings_.cacheFolder.c_str()));
    // This has no effect after the first load.
    webkit_cookie_manager_set_persistent_storage(
        webkit_network_session_get_cookie_manager(session.get()),
        inFolder(settings_.dataFolder.c_str(), "cookies.sqlite").c_str(),
        WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    // Otherwise the engine would store passwords of HTTP authentication in the keyring.
    webkit_network_session_set_persistent_credential_storage_enabled(session.get(), FALSE);
    webkit_network_session_set_tls_errors_policy(session.get(), WEBKIT_TLS_ERRORS_POLICY_FAIL);
    if (!settings_.downloads)
        settings_.downloads = std::make_shared<downloads::DownloadList>(
            downloads::desktopFileHandling(settings_.openExternally));
    setDownloadList(session.get(), settings_.downloads);
    refuseDownloadsWithoutView(session.get());
    probe = std::make_shared<CertificateProbe>(session, settings_.authority);
    notificationChoice = announceNotificationChoice(webkit_web_context_get_default(),
                                                    settings_.service, settings_.userChoice);
}

const gobject::GObjectPointer<WebKitNetworkSession>&
WebKitSession::networkSession(platform::WebsiteDataStore store) const {
    switch (store) {
    case platform::WebsiteDataStore::persistentDefault:
        return session;
    }
    invariantBroken("every data store has a session");
}

} // namespace kelo::webkit
