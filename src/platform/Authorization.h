#pragma once

#include "base/Bytes.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kelo::platform {

class Window;

/// A credential that the service accepts.
struct PlatformPublicKeyCredentialDescriptor {
    Bytes credentialId;
};

struct PlatformAssertionRequest {
    std::string relyingPartyIdentifier;
    Bytes challenge;
    /// Nothing, or an empty list, allows every credential of the relying party.
    std::optional<std::vector<PlatformPublicKeyCredentialDescriptor>> allowedCredentials;
    /// As the service wrote it: "required", "preferred", "discouraged" or anything else. Nothing is
    /// the platform's default, "preferred".
    std::optional<std::string> userVerificationPreference;
};

struct PlatformRegistrationRequest {
    std::string relyingPartyIdentifier;
    Bytes challenge;
    std::string name;
    Bytes userId;
};

using AuthorizationRequest = std::variant<PlatformAssertionRequest, PlatformRegistrationRequest>;

/// Creates requests for one relying party.
class PlatformPublicKeyCredentialProvider {
public:
    explicit PlatformPublicKeyCredentialProvider(std::string relyingPartyIdentifier)
        : relyingPartyIdentifier(std::move(relyingPartyIdentifier)) {}

    PlatformAssertionRequest createCredentialAssertionRequest(Bytes challenge) const {
        return {relyingPartyIdentifier, std::move(challenge), std::nullopt, std::nullopt};
    }
    PlatformRegistrationRequest
    createCredentialRegistrationRequest(Bytes challenge, std::string name, Bytes userId) const {
        return {relyingPartyIdentifier, std::move(challenge), std::move(name), std::move(userId)};
    }

private:
    std::string relyingPartyIdentifier;
};

struct PlatformAssertionCredential {
    Bytes credentialId;
    Bytes rawClientDataJson;
    std::optional<Bytes> rawAuthenticatorData;
    std::optional<Bytes> signature;
    std::optional<Bytes> userId;
};

struct PlatformRegistrationCredential {
    Bytes credentialId;
    Bytes rawClientDataJson;
    std::optional<Bytes> rawAttestationObject;
};

/// Any credential that is not a platform passkey.
struct OtherCredential {};

struct Authorization {
    std::variant<OtherCredential, PlatformAssertionCredential, PlatformRegistrationCredential>
        credential;
};

/// What the service has said about a passkey after the ceremony that returned it.
struct CredentialReport {
    enum class Verdict {
        /// The passkey is registered, or has signed in.
        accepted,
        /// The service has answered, but not with a success.
        refused,
    };
    std::string relyingPartyIdentifier;
    Bytes credentialId;
    Verdict verdict = Verdict::refused;
};

class AuthorizationController;

/// Receives the result: exactly one of the two calls, once, on the main thread.
class AuthorizationControllerDelegate {
public:
    virtual ~AuthorizationControllerDelegate() = default;
    virtual void didCompleteWithAuthorization(AuthorizationController& controller,
                                              Authorization authorization) = 0;
    /// The error is a Failure of kind cancelled, noCredential, notAllowed, storage or cryptography.
    virtual void didCompleteWithError(AuthorizationController& controller,
                                      std::exception_ptr error) = 0;
};

class AuthorizationPresentationContextProvider {
public:
    virtual ~AuthorizationPresentationContextProvider() = default;
    /// The window over which to present the sheet.
    virtual std::shared_ptr<Window> presentationAnchor(AuthorizationController& controller) = 0;
};

/// Runs a passkey ceremony. A running controller keeps itself alive. It holds its delegate and its
/// provider weakly.
class AuthorizationController {
public:
    virtual ~AuthorizationController() = default;
    virtual void setDelegate(std::weak_ptr<AuthorizationControllerDelegate> delegate) = 0;
    virtual void setPresentationContextProvider(
        std::weak_ptr<AuthorizationPresentationContextProvider> provider) = 0;
    /// Returns at once. The delegate is called in a later iteration of the main loop.
    virtual void performRequests() = 0;
};

} // namespace kelo::platform
