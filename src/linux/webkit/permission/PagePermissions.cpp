#include "linux/webkit/permission/PagePermissions.h"

#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/permission/MediaPermission.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kelo::webkit {

using permission::Capability;

namespace {

std::optional<Capability> deviceNamed(std::string_view name) {
    if (name == "microphone")
        return Capability::microphone;
    if (name == "camera")
        return Capability::camera;
    return std::nullopt;
}

} // namespace

struct PagePermissions::State {
    State(platform::EmbeddedWebView& view, WebKitWebView* native, const Url& service,
          const UserChoice& choice)
        : consent(native, service.host(), choice), media(view, native, service, consent, choice) {
        connections.push_back(gobject::connectSignal(
            native, "permission-request",
            +[](WebKitWebView*, WebKitPermissionRequest* request, State* self) -> gboolean {
                self->decide(request);
                return TRUE;
            },
            this));
        connections.push_back(gobject::connectSignal(
            native, "query-permission-state",
            +[](WebKitWebView*, WebKitPermissionStateQuery* query, State* self) -> gboolean {
                webkit_permission_state_query_finish(query, self->stateFor(query));
                return TRUE;
            },
            this));
        connections.push_back(gobject::connectSignal(
            native, "unmap", +[](GtkWidget*, State* self) { self->consent.refuseWaiting(); },
            this));
    }

    void decide(WebKitPermissionRequest* request) {
        if (WEBKIT_IS_USER_MEDIA_PERMISSION_REQUEST(request))
            media.decide(WEBKIT_USER_MEDIA_PERMISSION_REQUEST(request));
        else
            webkit_permission_request_deny(request);
    }

    WebKitPermissionState stateFor(WebKitPermissionStateQuery* query) const {
        const auto device = deviceNamed(webkit_permission_state_query_get_name(query));
        return device ? media.stateOf(*device) : WEBKIT_PERMISSION_STATE_DENIED;
    }

    UserConsent consent;
    MediaPermission media;
    // Last: disconnected before anything that the handlers use is destroyed.
    std::vector<gobject::SignalConnection> connections;
};

PagePermissions::PagePermissions(platform::EmbeddedWebView& view, WebKitWebView* native,
                                 const Url& service, const UserChoice& choice)
    : state(std::make_unique<State>(view, native, service, choice)) {}

PagePermissions::~PagePermissions() = default;

void PagePermissions::setDelegate(std::weak_ptr<platform::UserInterfaceDelegate> delegate) {
    state->media.setDelegate(std::move(delegate));
}

void PagePermissions::setAllowed(bool allowed) {
    state->media.setAllowed(allowed);
}

void PagePermissions::navigationStarted() {
    state->media.navigationStarted();
    state->consent.refuseWaiting();
}

void PagePermissions::navigationEnded() {
    state->media.navigationEnded();
}

void PagePermissions::pageChanged(const char* address) {
    state->media.pageChanged(address);
    state->consent.refuseWaiting();
}

} // namespace kelo::webkit
