#include "linux/inventory/Deletion.h"

#include "base/ShownText.h"
#include "base/Translation.h"

namespace kelo::inventory {

using authenticator::VerificationOutcome;

std::string deletionWarning(std::string_view account, std::string_view service) {
    return translated("The passkey of %1 for %2 will be deleted from this computer for good. The "
                      "service is not told: remove the passkey in your account there as well.",
                      {shownName(account), shownName(service)});
}

std::string nothingDeleted() {
    return translated("Nothing was deleted.");
}

std::string refusalFor(VerificationOutcome outcome) {
    switch (outcome) {
    case VerificationOutcome::cancelled:
        return nothingDeleted();
    case VerificationOutcome::unavailable:
        return translated(
            "This computer has no way to check that it is you, so nothing was deleted. "
            "\"%1\" says what is missing.",
            {"kelo-passkeys doctor"});
    default:
        return translated("Kelo could not verify that it is you, so nothing was deleted.");
    }
}

std::string passkeyDeleted() {
    return translated("The passkey was deleted.");
}

} // namespace kelo::inventory
