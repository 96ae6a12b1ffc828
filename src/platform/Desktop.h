#pragma once

#include "base/Clock.h"
#include "platform/Alert.h"
#include "platform/Application.h"
#include "platform/Authorization.h"
#include "platform/Bundle.h"
#include "platform/EmbeddedWebView.h"
#include "platform/EventMonitors.h"
#include "platform/FileSystem.h"
#include "platform/HttpSession.h"
#include "platform/Panel.h"
#include "platform/Screen.h"
#include "platform/StandardUpdaterController.h"
#include "platform/UserSession.h"

#include <memory>
#include <optional>
#include <vector>

namespace kelo::platform {

/// Everything that the system asks of the desktop. There is one in a process. State objects take no
/// constructor arguments and find it through current(); tests install their own.
class Desktop {
public:
    virtual ~Desktop() = default;

    virtual Application& application() = 0;
    virtual AlertPresenter& alerts() = 0;
    virtual Clock& clock() = 0;
    virtual FileSystem& fileSystem() = 0;

    /// A session with a private cookie store in memory. It accepts every cookie and sends cookies
    /// automatically; nothing is written to disk.
    virtual std::unique_ptr<HttpSession> makeEphemeralHttpSession() = 0;
    /// The process-wide session; it keeps no cookies.
    virtual HttpSession& sharedHttpSession() = 0;

    virtual std::shared_ptr<EmbeddedWebView> makeWebView(Rectangle frame,
                                                         WebViewConfiguration configuration) = 0;

    virtual std::shared_ptr<AuthorizationController>
    makeAuthorizationController(std::vector<AuthorizationRequest> requests) = 0;
    /// Tells the platform what the service has said about one of its passkeys, so that it can part
    /// with those that a newer one replaces. Returns at once. A failure is the platform's own
    /// affair.
    virtual void reportCredential(CredentialReport report) = 0;

    virtual EventMonitors& eventMonitors() = 0;
    /// Whether the session is locked is followed from the first call on.
    virtual UserSession& userSession() = 0;
    virtual std::shared_ptr<Panel> makePanel(PanelDescription description) = 0;
    /// The monitor that has the keyboard focus; empty while no monitor is connected.
    virtual std::optional<Screen> mainScreen() = 0;

    virtual Bundle& mainBundle() = 0;
    /// Creates and starts the updater.
    virtual std::unique_ptr<StandardUpdaterController> makeStandardUpdaterController() = 0;

    static Desktop& current();

    /// Installs a desktop as the current one for the lifetime of this object; it must outlive it.
    class Installation {
    public:
        explicit Installation(Desktop& desktop);
        ~Installation();
        Installation(const Installation&) = delete;
        Installation& operator=(const Installation&) = delete;

    private:
        Desktop* previous;
    };
};

} // namespace kelo::platform
