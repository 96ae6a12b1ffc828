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

enum class Ceremony {
    registration,
    signIn,
    deletion, ///< no service asks for it, but the owner of the passkey
};

/// What the user is asked to consent to.
struct ConsentRequest {
    Ceremony ceremony = Ceremony::signIn;
    /// The service that asks, or whose passkey is to be deleted.
    std::string relyingPartyIdentifier;
    /// At least one, but for a deletion none. If there are several, the user chooses one.
    std::vector<std::string> accountNames;
    /// For a deletion: what it takes away, in the user's language.
    std::string warning;
};

/// A question of the user verification, in the words of the PAM module ("Password: ").
struct VerificationPrompt {
    std::string text;
    /// Whether the answer is visible while the user types.
    bool echo = false;
};

/// Shows the messages and questions of a user verification, and returns the answers.
class VerificationConversation {
public:
    virtual ~VerificationConversation() = default;
    /// The answer. Nothing if the user cancels.
    virtual Task<std::optional<SecretText>> ask(VerificationPrompt prompt) = 0;
    /// Shown until the next message ("Swipe your finger").
    virtual void showInformation(std::string text) = 0;
    /// As showInformation(), but styled as an error ("Wrong password. Try again.").
    virtual void showError(std::string text) = 0;
    /// Calls the handler when the user cancels, also while no question is open. There is one
    /// handler; null removes it.
    virtual void onCancel(std::function<void()> handler) = 0;
};

/// The passkey sheet of one ceremony. confirm() opens it, the user verification uses it too, and
/// the destructor closes it.
class PasskeySheet : public VerificationConversation {
public:
    /// The index of the chosen account. Nothing if the user cancels.
    virtual Task<std::optional<std::size_t>> confirm(ConsentRequest request) = 0;
};

/// Makes the sheet of a ceremony. It is presented over the anchor, which may be null.
class PasskeySheetFactory {
public:
    virtual ~PasskeySheetFactory() = default;
    virtual std::unique_ptr<PasskeySheet> makeSheet(std::shared_ptr<platform::Window> anchor) = 0;
};

} // namespace kelo::authenticator
