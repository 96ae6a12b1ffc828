#pragma once

#include "linux/bus/Calls.h"
#include "linux/bus/Connection.h"
#include "linux/bus/Signal.h"

#include <functional>
#include <string>
#include <vector>

namespace kelo::input {

/// Names of the desktop's portal, as its interfaces define them.
namespace portal {

inline constexpr const char* busName = "org.freedesktop.portal.Desktop";
inline constexpr const char* path = "/org/freedesktop/portal/desktop";
inline constexpr const char* globalShortcuts = "org.freedesktop.portal.GlobalShortcuts";
inline constexpr const char* request = "org.freedesktop.portal.Request";
inline constexpr const char* session = "org.freedesktop.portal.Session";
inline constexpr const char* registry = "org.freedesktop.host.portal.Registry";

} // namespace portal

/// One request to the portal. Its response may wait for the user. Destroying a pending request
/// cancels it. Main thread only.
class PortalRequest {
public:
    /// Receives the results, or null if the user or the portal refused. May destroy the request.
    using Finished = std::function<void(GVariant* results)>;
    /// Builds the call's parameters from the options, of which it takes ownership.
    using Parameters = std::function<GVariant*(GVariantBuilder* options)>;

    /// Calls a method of the portal's global shortcuts. owner: the unique name of the portal.
    PortalRequest(bus::Connection connection, const std::string& owner, const char* method,
                  const Parameters& parameters, Finished finished);
    ~PortalRequest();
    PortalRequest(const PortalRequest&) = delete;
    PortalRequest& operator=(const PortalRequest&) = delete;

private:
    void accepted(const char* method, GVariant* answer, const GError* failure);
    void responded(GVariant* values);
    /// Calls the callback once. It may destroy this object.
    void finish(GVariant* results);

    bus::Connection connection;
    /// The portal's object for this request.
    bus::Object object;
    bool isPending = true;
    Finished finished;
    bus::Calls calls;
    bus::Signal response;
};

/// The names of the shortcuts that a response of the portal says are bound.
std::vector<std::string> shortcutsIn(GVariant* results);
/// A token for a request or a session. It is unique within this program.
std::string portalToken();
/// The path of the portal's object for a token. kind: "request" or "session".
std::string portalPath(const bus::Connection& connection, const char* kind,
                       const std::string& token);

} // namespace kelo::input
