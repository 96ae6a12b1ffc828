#pragma once

#include "base/LocalizedError.h"

#include <string>
#include <utility>

namespace kelo {

enum class PlatformErrorKind {
    cannotConnect, ///< nobody answers, or the connection broke
    timedOut,      ///< no complete reply in time
    insecure,      ///< the certificate, or TLS itself, did not hold
    badReply,      ///< a reply that breaks the protocol: too long, too short
    invalidJson,   ///< text that is not JSON, or a value that cannot be written as JSON
    cancelled,     ///< the user said no
    noCredential,  ///< no passkey that could answer
    notAllowed,    ///< user verification failed, or the request is not for us
    storage,       ///< the keyring or the disk did not keep or give what was asked
};

/// A failure of the platform under the system. The description is one sentence (or two) that says
/// what happened and what to do, fit for the screen; the cause is for the journal and may be empty.
class PlatformError : public LocalizedError {
public:
    PlatformError(PlatformErrorKind kind, std::string description, std::string cause = {})
        : kind_(kind), description_(std::move(description)), cause_(std::move(cause)) {}

    PlatformErrorKind kind() const { return kind_; }
    std::string localizedDescription() const override { return description_; }
    const std::string& cause() const { return cause_; }
    const char* what() const noexcept override {
        return cause_.empty() ? description_.c_str() : cause_.c_str();
    }

private:
    PlatformErrorKind kind_;
    std::string description_;
    std::string cause_;
};

} // namespace kelo
