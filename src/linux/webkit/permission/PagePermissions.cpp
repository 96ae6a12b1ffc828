#include "linux/webkit/permission/PagePermissions.h"

#include "linux/gobject/MainLoopSource.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/permission/MediaPermission.h"
#include "linux/webkit/permission/WebNotifications.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kelo::webkit {

using permission::Answer;
using permission::Capability;

namespace {

std::optional<Capability> capabilityNamed(std::string_view name) {
    if (name == "microphone")
        return Capability::microphone;
    if (name == "camera")
        return Capability::camera;
    if (name == "notifications")
        return Capability::notifications;
    return std::nullopt;
}

WebKitPermissionState stateOf(Answer answer) {
    switch (answer) {
    case Answer::ask:
        return WEBKIT_PERMISSION_STATE_PROMPT;
    case Answer::allowed:
        return WEBKIT_PERMISSION_STATE_GRANTED;
    case Answer::denied:
        break;
    }
    return WEBKIT_PERMISSION_STATE_DENIED;
}

} // namespace

struct PagePermissions::State {
    State(platform::EmbeddedWebView& view, WebKitWebView* native, const Url& service,
          const UserChoice& choice)
        : consent(native, service.host(), choice),
          media(view, native, service, consent, choice),
          notifications(native, choice.notifications, [this] { return mayNotify(); }) {
        if (choice)
            // Observers are told before the change.
            choiceObservation = choice.remembered->observe(
                [this] { choiceChanged.after({}, [this] { closeUnlessAllowed(); }); });
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
        else if (WEBKIT_IS_NOTIFICATION_PERMISSION_REQUEST(request) && media.isUsersPage())
            askForNotifications(request);
        else
            webkit_permission_request_deny(request);
    }

    void askForNotifications(WebKitPermissionRequest* request) {
        consent.request({Capability::notifications},
                        [kept = gobject::GObjectPointer<WebKitPermissionRequest>::share(request)](
                            bool isGranted) {
                            if (isGranted)
                                webkit_permission_request_allow(kept.get());
                            else
                                webkit_permission_request_deny(kept.get());
                        });
    }

    bool mayNotify() const {
        return media.isUsersPage() && consent.isAllowed(Capability::notifications);
    }

    void closeUnlessAllowed() {
        if (!consent.isAllowed(Capability::notifications))
            notifications.closeAll();
    }

    WebKitPermissionState stateFor(WebKitPermissionStateQuery* query) const {
        const auto capability = capabilityNamed(webkit_permission_state_query_get_name(query));
        if (capability && media.isUsersPage())
            return stateOf(consent.answer(*capability));
        const bool isDevice = capability && *capability != Capability::notifications;
        return isDevice && media.delegateDecides() ? WEBKIT_PERMISSION_STATE_PROMPT
                                                   : WEBKIT_PERMISSION_STATE_DENIED;
    }

    UserConsent consent;
    MediaPermission media;
    WebNotifications notifications;
    gobject::ScheduledJob choiceChanged;
    Observation choiceObservation;
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
