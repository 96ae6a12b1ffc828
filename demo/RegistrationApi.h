#pragma once

#include "demo/ServiceContext.h"
#include "demo/http/Http.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace kelo::demo {

/// Registers a passkey for the signed-in user: CSRF token, options, verification.
class RegistrationApi {
public:
    /// The context must outlive this.
    explicit RegistrationApi(ServiceContext& context);

    Reply csrf(const Request& request);
    Reply options(const Request& request);
    Reply verify(const Request& request);

private:
    std::optional<Reply> refuseUnlessSignedIn(const Request& request) const;
    Passkey checkAttestation(const nlohmann::json& body, const Session& session);
    std::optional<Reply> refuseUnlessConfirmed(const nlohmann::json& body, const Account& account);

    ServiceContext& context;
};

} // namespace kelo::demo
