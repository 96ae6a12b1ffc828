#include "passkey/PasskeyError.h"

#include <utility>

namespace kelo::passkey {

PasskeyError::PasskeyError(Case kind, std::string text) : kind_(kind), text(std::move(text)) {}

PasskeyError PasskeyError::badResponse(std::string text) {
    return PasskeyError(Case::badResponse, std::move(text));
}
PasskeyError PasskeyError::optionsFailed() {
    return PasskeyError(Case::optionsFailed);
}
PasskeyError PasskeyError::noSessionCookie() {
    return PasskeyError(Case::noSessionCookie);
}
PasskeyError PasskeyError::signInRejected() {
    return PasskeyError(Case::signInRejected);
}

std::string PasskeyError::localizedDescription() const {
    switch (kind_) {
    case Case::badResponse:
        return text;
    case Case::optionsFailed:
        return "Could not start passkey login.";
    case Case::noSessionCookie:
        return "Signed in but no session was returned.";
    case Case::signInRejected:
        return "Passkey was not accepted.";
    }
    return text;
}

} // namespace kelo::passkey
