#pragma once

#include "linux/input/portal/BusClient.h"

#include <functional>
#include <string>

namespace kelo::input {

/// One request to the portal. Its response may wait for the user. Destroying a pending request
/// cancels it. Main thread only.
class PortalRequest {
public:
    /// Receives the results, or null if the user or the portal refused. May destroy the request.
    using Finished = std::function<void(GVariant* results)>;
    /// Builds the call's parameters from the options, of which it takes ownership.
    using Parameters = std::function<GVariant*(GVariantBuilder* options)>;

    /// Calls a method of the portal's global shortcuts. owner: the unique name of the portal.
    PortalRequest(BusConnection connection, const std::string& owner, const char* method,
                  const Parameters& parameters, Finished finished);
    ~PortalRequest();
    PortalRequest(const PortalRequest&) = delete;
    PortalRequest& operator=(const PortalRequest&) = delete;

private:
    void accepted(const char* method, GVariant* answer, const GError* failure);
    void responded(GVariant* values);
    /// Calls the callback once. It may destroy this object.
    void finish(GVariant* results);

    BusConnection connection;
    /// The portal's object for this request.
    BusObject object;
    bool isPending = true;
    Finished finished;
    BusCalls calls;
    BusSignal response;
};

/// A token for a request or a session. It is unique within this program.
std::string portalToken();
/// The path of the portal's object for a token. kind: "request" or "session".
std::string portalPath(const BusConnection& connection, const char* kind, const std::string& token);

} // namespace kelo::input
