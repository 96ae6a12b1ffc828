#pragma once

#include "base/SecretText.h"
#include "base/async/Task.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::platform {
class Window;
}

namespace kelo::authenticator {

enum class Ceremony { registration, signIn };

/// What the user is asked to agree to.
struct ConsentRequest {
    Ceremony ceremony = Ceremony::signIn;
    /// Who asks.
    std::string relyingPartyIdentifier;
    /// At least one; the user chooses when there are several.
    std::vector<std::string> accountNames;
};

/// A question of the user verification, as its source words it ("Password: ").
struct VerificationPrompt {
    std::string text;
    /// Whether the answer may be seen while it is typed.
    bool echo = false;
};

/// The words of a user verification: shown to the user, answered by them.
class VerificationConversation {
public:
    virtual ~VerificationConversation() = default;
    /// The answer, or nothing when the user cancelled.
    virtual Task<std::optional<SecretText>> ask(VerificationPrompt prompt) = 0;
    /// Stays until the next text ("Swipe your finger").
    virtual void showInformation(std::string text) = 0;
    /// As showInformation(), marked as a failure ("Wrong password. Try again.").
    virtual void showError(std::string text) = 0;
    /// Run when the user cancels, also while no question is open. Replaces the former action; null
    /// for none.
    virtual void onCancel(std::function<void()> action) = 0;
};

/// The passkey sheet of one ceremony: only user interface. It opens with confirm(), shows the
/// conversation of the verification in the same place, and closes when it is destroyed.
class PasskeySheet : public VerificationConversation {
public:
    /// The index of the account the user agreed to, or nothing when they cancelled.
    virtual Task<std::optional<std::size_t>> confirm(ConsentRequest request) = 0;
};

/// Makes the sheet of a ceremony over a window.
class PasskeySheetFactory {
public:
    virtual ~PasskeySheetFactory() = default;
    virtual std::unique_ptr<PasskeySheet> makeSheet(std::shared_ptr<platform::Window> anchor) = 0;
};

} // namespace kelo::authenticator
