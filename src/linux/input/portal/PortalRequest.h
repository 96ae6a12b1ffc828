#pragma once

#include "linux/input/portal/BusClient.h"

#include <functional>
#include <string>

namespace kelo::input {

/// One request to the portal, from the call to its response, which may wait for the user. When it
/// goes before, the request is given up. Main thread only.
class PortalRequest {
public:
    /// Gets the results, or null when the user or the portal refused. May let the request go.
    using Finished = std::function<void(GVariant* results)>;
    /// Builds the call's parameters around the options, which it takes over.
    using Parameters = std::function<GVariant*(GVariantBuilder* options)>;

    /// Calls a method of the global shortcuts of the portal that owner is.
    PortalRequest(BusConnection connection, const std::string& owner, const char* method,
                  const Parameters& parameters, Finished finished);
    ~PortalRequest();
    PortalRequest(const PortalRequest&) = delete;
    PortalRequest& operator=(const PortalRequest&) = delete;

private:
    void taken(const char* method, GVariant* answer, const GError* failure);
    void responded(GVariant* values);
    /// Tells it, once. This may be gone afterwards.
    void finish(GVariant* results);

    BusConnection connection;
    /// Where it is at the portal.
    BusObject object;
    bool isPending = true;
    Finished finished;
    BusCalls calls;
    BusSignal response;
};

/// A name for a request or a session that nobody else of this connection uses.
std::string portalToken();
/// Where the portal keeps what this connection names by a token; kind is "request" or "session".
std::string portalPath(const BusConnection& connection, const char* kind, const std::string& token);

} // namespace kelo::input
