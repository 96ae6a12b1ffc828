#pragma once

#include "platform/Authorization.h"

#include <memory>
#include <vector>

namespace kelo::authenticator {
class PasskeySheetFactory;
}

namespace kelo::authorization {

class LocalAuthenticator;

/// Makes authorization controllers that use the passkeys of this computer. Touches no file,
/// keyring, helper or thread before the first ceremony. Main thread.
class PasskeyServices {
public:
    /// The factory must outlive this.
    explicit PasskeyServices(authenticator::PasskeySheetFactory& sheets);
    /// Destroy the spawned tasks first: a running ceremony uses this object.
    ~PasskeyServices();
    PasskeyServices(const PasskeyServices&) = delete;
    PasskeyServices& operator=(const PasskeyServices&) = delete;

    /// A controller for exactly one request. When its ceremony starts, it cancels the running one.
    std::shared_ptr<platform::AuthorizationController>
    makeController(std::vector<platform::AuthorizationRequest> requests);

    /// Notes in the file with the passkeys what the service has said about one of them, before the
    /// next ceremony reads it. Returns at once; a failure goes to the log.
    void report(platform::CredentialReport report);

private:
    std::unique_ptr<LocalAuthenticator> authenticator;
};

} // namespace kelo::authorization
