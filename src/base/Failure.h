#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kelo {

/// An error with a text for the person in front of the screen.
class LocalizedError : public std::exception {
public:
    virtual std::string localizedDescription() const = 0;
    const char* what() const noexcept override { return "an error with a localized description"; }
};

/// What to show for an error of any kind: its localized description, or a general sentence for an
/// error that has none. The error must not be null.
std::string localizedDescription(const std::exception_ptr& error);

enum class FailureKind {
    cannotConnect, ///< nobody answers, or the connection broke
    timedOut,      ///< no complete reply in time
    insecure,      ///< the certificate, or TLS itself, did not hold
    badReply,      ///< a reply that breaks the protocol: too long, too short
    invalidJson,   ///< text that is not JSON, or a value that cannot be written as JSON
    cancelled,     ///< the user said no
    noCredential,  ///< no passkey that could answer
    notAllowed,    ///< user verification failed, or the request is not for us
    storage,       ///< the keyring or the disk did not keep or give what was asked
    cryptography,  ///< the cryptographic library failed
};

/// What went wrong, for whoever handles it and for the user. The description is one sentence (or
/// two) that says what happened and what to do, fit for the screen; the cause is for the log and
/// may be empty.
class Failure : public LocalizedError {
public:
    Failure(FailureKind kind, std::string description, std::string cause = {})
        : kind_(kind), description_(std::move(description)), cause_(std::move(cause)) {}

    FailureKind kind() const { return kind_; }
    std::string localizedDescription() const override { return description_; }
    const std::string& cause() const { return cause_; }
    const char* what() const noexcept override {
        return cause_.empty() ? description_.c_str() : cause_.c_str();
    }

private:
    FailureKind kind_;
    std::string description_;
    std::string cause_;
};

} // namespace kelo
