#pragma once

#include "authenticator/AuthenticatorParts.h"
#include "base/async/Cancellation.h"
#include "platform/Authorization.h"

#include <memory>
#include <optional>

namespace kelo::authorization {

/// The authenticator of this computer. It runs one ceremony at a time. Main thread.
class LocalAuthenticator {
public:
    /// Touches no file, keyring, helper or thread. The factory must outlive this.
    explicit LocalAuthenticator(authenticator::PasskeySheetFactory& sheets);
    /// Destroy all ceremonies first.
    ~LocalAuthenticator();
    LocalAuthenticator(const LocalAuthenticator&) = delete;
    LocalAuthenticator& operator=(const LocalAuthenticator&) = delete;

    /// What a ceremony needs. Created by the first call.
    const authenticator::AuthenticatorParts& parts();
    /// Makes this ceremony the current one and cancels the one before it.
    void begin(Cancellation ceremony);
    /// Notes the report before the next ceremony reads the passkeys. Returns at once; a failure
    /// goes to the log.
    void report(platform::CredentialReport report);

private:
    struct Storage;

    authenticator::PasskeySheetFactory& sheets;
    std::unique_ptr<Storage> storage;
    std::optional<Cancellation> current;
};

} // namespace kelo::authorization
