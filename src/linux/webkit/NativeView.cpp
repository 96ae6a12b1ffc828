#include "linux/webkit/NativeView.h"

#include "deployment/Deployment.h"
#include "linux/webkit/content/EngineHandles.h"
#include "linux/webkit/content/LoadMoments.h"
#include "linux/webkit/content/WorkerNotifications.h"

#include <string>

namespace kelo::webkit {

using platform::InjectionTime;
using platform::UrlRequest;
using platform::UserScript;
using platform::WebViewConfiguration;

namespace {

void addScript(WebKitUserContentManager* manager, const UserScript& script) {
    const UserScriptPointer native(
        webkit_user_script_new(script.source.c_str(),
                               script.forMainFrameOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME
                                                       : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                               script.injectionTime == InjectionTime::atDocumentStart
                                   ? WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START
                                   : WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END,
                               nullptr, nullptr));
    webkit_user_content_manager_add_script(manager, native.get());
}

} // namespace

gobject::GObjectPointer<WebKitWebView> makeNativeView(WebKitNetworkSession* session,
                                                      platform::Rectangle frame,
                                                      const WebViewConfiguration& configuration) {
    const auto content =
        gobject::GObjectPointer<WebKitUserContentManager>::adopt(webkit_user_content_manager_new());
    for (const UserScript& script : configuration.userScripts)
        addScript(content.get(), script);

    const auto settings = gobject::GObjectPointer<WebKitSettings>::adopt(webkit_settings_new());
    // This setting does not affect user scripts.
    webkit_settings_set_enable_javascript_markup(settings.get(),
                                                 configuration.allowsContentJavaScript);
    // After the engine's own, which pages look into for what the engine can do.
    const std::string agent = webkit_settings_get_user_agent(settings.get());
    webkit_settings_set_user_agent(settings.get(),
                                   (agent + " " + std::string(deployment::userAgent)).c_str());
    // MediaPermission enables it where somebody decides about it.
    webkit_settings_set_enable_media_stream(settings.get(), FALSE);
    withholdWorkerNotifications(settings.get());

    const auto policies = gobject::GObjectPointer<WebKitWebsitePolicies>::adopt(
        webkit_website_policies_new_with_policies("autoplay",
                                                  configuration.allowsAutoplay
                                                      ? WEBKIT_AUTOPLAY_ALLOW
                                                      : WEBKIT_AUTOPLAY_ALLOW_WITHOUT_SOUND,
                                                  nullptr));
    auto view = gobject::GObjectPointer<WebKitWebView>::share(WEBKIT_WEB_VIEW(g_object_new(
        WEBKIT_TYPE_WEB_VIEW, "network-session", session, "user-content-manager", content.get(),
        "settings", settings.get(), "website-policies", policies.get(), nullptr)));
    markLoads(view.get());
    gtk_widget_set_hexpand(GTK_WIDGET(view.get()), TRUE);
    gtk_widget_set_vexpand(GTK_WIDGET(view.get()), TRUE);
    if (frame.width > 0 && frame.height > 0)
        gtk_widget_set_size_request(GTK_WIDGET(view.get()), static_cast<int>(frame.width),
                                    static_cast<int>(frame.height));
    return view;
}

gobject::GObjectPointer<WebKitURIRequest> nativeRequest(const UrlRequest& request) {
    auto native = gobject::GObjectPointer<WebKitURIRequest>::adopt(
        webkit_uri_request_new(request.url.absoluteString().c_str()));
    switch (request.cachePolicy) {
    case platform::CachePolicy::useProtocolCachePolicy:
        break; // What the engine does by default.
    }
    SoupMessageHeaders* const headers = webkit_uri_request_get_http_headers(native.get());
    for (const auto& [name, value] : request.headers)
        if (headers)
            soup_message_headers_append(headers, name.c_str(), value.c_str());
    return native;
}

} // namespace kelo::webkit
