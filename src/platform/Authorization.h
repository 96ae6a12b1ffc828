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

/// A credential the service allows to answer.
struct PlatformPublicKeyCredentialDescriptor {
    Bytes credentialId;
};

struct PlatformAssertionRequest {
    std::string relyingPartyIdentifier;
    Bytes challenge;
    /// Nothing: any credential of the relying party. An empty list means the same.
    std::optional<std::vector<PlatformPublicKeyCredentialDescriptor>> allowedCredentials;
    /// As the service wrote it ("required", "preferred", "discouraged", or anything else);
    /// nothing: the platform's default, which is "preferred".
    std::optional<std::string> userVerificationPreference;
};

struct PlatformRegistrationRequest {
    std::string relyingPartyIdentifier;
    Bytes challenge;
    std::string name;
    Bytes userId;
};

using AuthorizationRequest = std::variant<PlatformAssertionRequest, PlatformRegistrationRequest>;

/// Makes requests for one relying party.
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

class AuthorizationController;

/// Hears of the outcome: exactly one of the two, once, on the main thread.
class AuthorizationControllerDelegate {
public:
    virtual ~AuthorizationControllerDelegate() = default;
    virtual void didCompleteWithAuthorization(AuthorizationController& controller,
                                              Authorization authorization) = 0;
    /// The error is a Failure: cancelled, noCredential, notAllowed or storage.
    virtual void didCompleteWithError(AuthorizationController& controller,
                                      std::exception_ptr error) = 0;
};

class AuthorizationPresentationContextProvider {
public:
    virtual ~AuthorizationPresentationContextProvider() = default;
    /// The window to present the sheet over.
    virtual std::shared_ptr<Window> presentationAnchor(AuthorizationController& controller) = 0;
};

/// Runs a passkey ceremony. It keeps itself alive while the ceremony runs, so the one who started
/// it need not; delegate and provider are held weakly.
class AuthorizationController {
public:
    virtual ~AuthorizationController() = default;
    virtual void setDelegate(std::weak_ptr<AuthorizationControllerDelegate> delegate) = 0;
    virtual void setPresentationContextProvider(
        std::weak_ptr<AuthorizationPresentationContextProvider> provider) = 0;
    /// Returns at once; the delegate is called in a later turn of the main loop.
    virtual void performRequests() = 0;
};

} // namespace kelo::platform
