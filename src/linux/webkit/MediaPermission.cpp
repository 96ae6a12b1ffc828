#include "linux/webkit/MediaPermission.h"

#include "linux/webkit/ForeignFrames.h"

#include <optional>
#include <string_view>
#include <utility>

namespace kelo::webkit {

using platform::MediaCaptureType;
using platform::PermissionDecision;
using platform::SecurityOrigin;

namespace {

// Only of a page from the web: about:, data: and the like have no host that could be trusted.
std::optional<SecurityOrigin> originOf(const char* address) {
    if (!address || !std::string_view(address).starts_with("https://"))
        return std::nullopt;
    WebKitSecurityOrigin* const native = webkit_security_origin_new_for_uri(address);
    const char* const host = webkit_security_origin_get_host(native);
    std::optional<SecurityOrigin> origin;
    if (host)
        origin = SecurityOrigin{"https", host, webkit_security_origin_get_port(native)};
    webkit_security_origin_unref(native);
    return origin;
}

std::optional<MediaCaptureType> typeOf(WebKitUserMediaPermissionRequest* request) {
    const bool microphone = webkit_user_media_permission_is_for_audio_device(request);
    const bool camera = webkit_user_media_permission_is_for_video_device(request);
    if (webkit_user_media_permission_is_for_display_device(request) || !(microphone || camera))
        return std::nullopt;
    if (microphone && camera)
        return MediaCaptureType::cameraAndMicrophone;
    return microphone ? MediaCaptureType::microphone : MediaCaptureType::camera;
}

} // namespace

struct MediaPermission::Page {
    std::optional<SecurityOrigin> origin;
    bool isBeingLeft = false;
};

/// A request that waits for its answer. Refused when nobody answers, and when the page has gone or
/// is about to.
class MediaPermission::Decision {
public:
    Decision(WebKitUserMediaPermissionRequest* request, std::weak_ptr<const Page> page)
        : request(gobject::GObjectPointer<WebKitUserMediaPermissionRequest>::share(request)),
          page(std::move(page)) {}
    ~Decision() { take(PermissionDecision::deny); }
    Decision(const Decision&) = delete;
    Decision& operator=(const Decision&) = delete;

    /// The first one counts.
    void take(PermissionDecision decision) {
        const auto waiting = std::exchange(request, {});
        if (!waiting)
            return;
        const auto asking = page.lock();
        const bool granted =
            decision == PermissionDecision::grant && asking && !asking->isBeingLeft;
        auto* const native = WEBKIT_PERMISSION_REQUEST(waiting.get());
        if (granted)
            webkit_permission_request_allow(native);
        else
            webkit_permission_request_deny(native);
    }

private:
    gobject::GObjectPointer<WebKitUserMediaPermissionRequest> request;
    std::weak_ptr<const Page> page;
};

MediaPermission::MediaPermission(platform::EmbeddedWebView& view, WebKitWebView* native,
                                 const Url& service)
    : view(view), native(native), service(service), page(std::make_shared<Page>()) {}

void MediaPermission::setDelegate(std::weak_ptr<platform::UserInterfaceDelegate> newDelegate) {
    delegate = std::move(newDelegate);
    if (!std::exchange(framesGuarded, true))
        keepMediaFromForeignFrames(webkit_web_view_get_user_content_manager(native), service);
    webkit_settings_set_enable_media_stream(webkit_web_view_get_settings(native), TRUE);
}

void MediaPermission::navigationStarted() {
    page->isBeingLeft = true;
}

void MediaPermission::navigationEnded() {
    page->isBeingLeft = false;
}

void MediaPermission::pageChanged(const char* address) {
    page = std::make_shared<Page>(Page{originOf(address)});
}

void MediaPermission::decide(WebKitUserMediaPermissionRequest* request) {
    const auto decision = std::make_shared<Decision>(request, page);
    const auto type = typeOf(request);
    const auto decider = delegate.lock();
    if (!type || !decider || !page->origin || page->isBeingLeft)
        return;
    const SecurityOrigin origin = *page->origin;
    decider->requestMediaCapturePermission(
        view, origin, *type, [decision](PermissionDecision answer) { decision->take(answer); });
}

WebKitPermissionState MediaPermission::stateFor(WebKitPermissionStateQuery* query) const {
    const std::string_view name = webkit_permission_state_query_get_name(query);
    const bool askable = (name == "microphone" || name == "camera") && !delegate.expired();
    return askable ? WEBKIT_PERMISSION_STATE_PROMPT : WEBKIT_PERMISSION_STATE_DENIED;
}

} // namespace kelo::webkit
