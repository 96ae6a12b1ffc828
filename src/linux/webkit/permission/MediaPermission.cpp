#include "linux/webkit/permission/MediaPermission.h"

#include "linux/webkit/content/CrossOriginFrames.h"
#include "linux/webkit/content/EngineHandles.h"

#include <optional>
#include <string_view>
#include <utility>

namespace kelo::webkit {

using permission::Capability;
using platform::MediaCaptureType;
using platform::PermissionDecision;
using platform::SecurityOrigin;

namespace {

// Only https pages have a host that can be trusted; about:, data: and the like have none.
std::optional<SecurityOrigin> originOf(const char* address) {
    if (!address || !std::string_view(address).starts_with("https://"))
        return std::nullopt;
    const SecurityOriginPointer native(webkit_security_origin_new_for_uri(address));
    const char* const host = webkit_security_origin_get_host(native.get());
    if (!host)
        return std::nullopt;
    return SecurityOrigin{"https", host, webkit_security_origin_get_port(native.get())};
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

std::vector<Capability> devicesOf(MediaCaptureType type) {
    switch (type) {
    case MediaCaptureType::microphone:
        return {Capability::microphone};
    case MediaCaptureType::camera:
        return {Capability::camera};
    case MediaCaptureType::cameraAndMicrophone:
        return {Capability::microphone, Capability::camera};
    }
    return {};
}

} // namespace

struct MediaPermission::Page {
    std::optional<SecurityOrigin> origin;
    bool isServices = false;
    bool isBeingLeft = false;
};

/// A pending permission request. Denied if it is destroyed without a decision, and if its page has
/// gone or is being left by the time of the decision.
class MediaPermission::Decision {
public:
    Decision(WebKitUserMediaPermissionRequest* request, std::weak_ptr<const Page> page)
        : request(gobject::GObjectPointer<WebKitUserMediaPermissionRequest>::share(request)),
          page(std::move(page)) {}
    ~Decision() { take(PermissionDecision::deny); }
    Decision(const Decision&) = delete;
    Decision& operator=(const Decision&) = delete;

    /// Only the first call has an effect.
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
                                 const Url& service, UserConsent& consent, const UserChoice& choice)
    : view(view),
      native(native),
      service(service),
      consent(consent),
      userDecides(static_cast<bool>(choice)),
      page(std::make_shared<Page>()) {
    const auto changed =
        +[](WebKitWebView*, GParamSpec*, MediaPermission* self) { self->stopUnlessAllowed(); };
    // A capture that was granted before may begin only after it was forbidden.
    microphoneConnection =
        gobject::connectSignal(native, "notify::microphone-capture-state", changed, this);
    cameraConnection =
        gobject::connectSignal(native, "notify::camera-capture-state", changed, this);
    if (!userDecides)
        return;
    unmapConnection = gobject::connectSignal(
        native, "unmap", +[](GtkWidget*, MediaPermission* self) { self->stopUnlessAllowed(); },
        this);
    // Observers are told before the change.
    choiceObservation = choice.remembered->observe(
        [this] { choiceChanged.after({}, [this] { stopUnlessAllowed(); }); });
    offerDevices();
}

void MediaPermission::setDelegate(std::weak_ptr<platform::UserInterfaceDelegate> newDelegate) {
    delegate = std::move(newDelegate);
    userDecides = false;
    offerDevices();
}

void MediaPermission::offerDevices() {
    if (std::exchange(devicesOffered, true))
        return;
    denyMediaToCrossOriginFrames(webkit_web_view_get_user_content_manager(native), service);
    webkit_settings_set_enable_media_stream(webkit_web_view_get_settings(native), TRUE);
}

void MediaPermission::setAllowed(bool allowed) {
    isAllowed = allowed;
    // Requests that wait for their decision are denied: their page has gone.
    if (!allowed)
        page = std::make_shared<Page>(*page);
    stopUnlessAllowed();
}

// Nobody can see a closed window listen, so what runs in it ends.
bool MediaPermission::mayCapture(Capability device) const {
    if (!userDecides)
        return isAllowed;
    return isAllowed && consent.isAllowed(device) && gtk_widget_get_mapped(GTK_WIDGET(native));
}

// Stopped and not muted: a muted capture would go on as soon as somebody lifts the mute. The engine
// answers each stop with a signal that nothing has changed yet, so the next one waits a little.
void MediaPermission::stopUnlessAllowed() {
    constexpr std::chrono::milliseconds pause{50};
    const bool stopsMicrophone =
        webkit_web_view_get_microphone_capture_state(native) != WEBKIT_MEDIA_CAPTURE_STATE_NONE &&
        !mayCapture(Capability::microphone);
    const bool stopsCamera =
        webkit_web_view_get_camera_capture_state(native) != WEBKIT_MEDIA_CAPTURE_STATE_NONE &&
        !mayCapture(Capability::camera);
    if (stopAgain.isWaiting() || !(stopsMicrophone || stopsCamera))
        return;
    stopAgain.after(pause, [this] { stopUnlessAllowed(); });
    if (stopsMicrophone)
        webkit_web_view_set_microphone_capture_state(native, WEBKIT_MEDIA_CAPTURE_STATE_NONE);
    if (stopsCamera)
        webkit_web_view_set_camera_capture_state(native, WEBKIT_MEDIA_CAPTURE_STATE_NONE);
}

void MediaPermission::navigationStarted() {
    page->isBeingLeft = true;
}

void MediaPermission::navigationEnded() {
    page->isBeingLeft = false;
}

void MediaPermission::pageChanged(const char* address) {
    const auto url = address ? Url::parse(address) : std::nullopt;
    page = std::make_shared<Page>(Page{originOf(address), url && url->hasSameOrigin(service)});
}

bool MediaPermission::isUsersPage() const {
    return userDecides && page->isServices && !page->isBeingLeft;
}

void MediaPermission::decide(WebKitUserMediaPermissionRequest* request) {
    const auto decision = std::make_shared<Decision>(request, page);
    const auto type = typeOf(request);
    if (!isAllowed || !type || !page->origin || page->isBeingLeft)
        return;
    if (const auto decider = delegate.lock()) {
        askDelegate(*decider, *type, decision);
        return;
    }
    if (isUsersPage())
        consent.request(devicesOf(*type), [decision](bool isGranted) {
            decision->take(isGranted ? PermissionDecision::grant : PermissionDecision::deny);
        });
}

void MediaPermission::askDelegate(platform::UserInterfaceDelegate& decider, MediaCaptureType type,
                                  std::shared_ptr<Decision> decision) {
    const SecurityOrigin origin = *page->origin;
    decider.requestMediaCapturePermission(
        view, origin, type,
        [decision = std::move(decision)](PermissionDecision answer) { decision->take(answer); });
}

bool MediaPermission::delegateDecides() const {
    return !userDecides && !delegate.expired();
}

} // namespace kelo::webkit
