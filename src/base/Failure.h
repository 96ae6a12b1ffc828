#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kelo {

/// An error with a text for the user.
class LocalizedError : public std::exception {
public:
    virtual std::string localizedDescription() const = 0;
    const char* what() const noexcept override { return "an error with a localized description"; }
};

/// The text to show for any error: its localized description, or a general sentence if it has none.
/// The error must not be null.
std::string localizedDescription(const std::exception_ptr& error);

enum class FailureKind {
    cannotConnect, ///< no answer, or a broken connection
    timedOut,      ///< no complete reply in time
    insecure,      ///< the certificate or TLS itself failed
    badReply,      ///< a response that breaks the protocol, for instance too long or cut short
    invalidJson,   ///< text that is not JSON, or a value that cannot be written as JSON
    cancelled,     ///< the user cancelled
    noCredential,  ///< no passkey for this request
    notAllowed,    ///< user verification failed, or the relying party is not ours
    storage,       ///< the keyring or the disk failed to store or load
    cryptography,  ///< the cryptographic library failed
};

/// An error with a kind for the caller, a description for the user (one or two sentences: what
/// happened and what to do) and a cause for the log, which may be empty.
template <typename Kind>
class ErrorOfKind : public LocalizedError {
public:
    ErrorOfKind(Kind kind, std::string description, std::string cause = {})
        : kind_(kind), description_(std::move(description)), cause_(std::move(cause)) {}

    Kind kind() const { return kind_; }
    std::string localizedDescription() const override { return description_; }
    const std::string& cause() const { return cause_; }
    const char* what() const noexcept override {
        return cause_.empty() ? description_.c_str() : cause_.c_str();
    }

private:
    Kind kind_;
    std::string description_;
    std::string cause_;
};

class Failure : public ErrorOfKind<FailureKind> {
public:
    using ErrorOfKind::ErrorOfKind;
};

} // namespace kelo
