#pragma once

#include "base/Failure.h"

#include <string>

namespace kelo::passkey {

/// A failure of a passkey flow by its own rules. Other failures are not wrapped: they reach the
/// user with their own text.
class PasskeyError final : public LocalizedError {
public:
    enum class Case { badResponse, optionsFailed, noSessionCookie, signInRejected };

    /// Carries its own description, shown unchanged.
    static PasskeyError badResponse(std::string text);
    static PasskeyError optionsFailed();
    static PasskeyError noSessionCookie();
    static PasskeyError signInRejected();

    Case kind() const { return kind_; }
    std::string localizedDescription() const override;

    friend bool operator==(const PasskeyError& left, const PasskeyError& right) {
        return left.kind_ == right.kind_ && left.text == right.text;
    }

private:
    explicit PasskeyError(Case kind, std::string text = {});

    Case kind_;
    std::string text; ///< of badResponse only
};

} // namespace kelo::passkey
