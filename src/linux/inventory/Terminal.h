#pragma once

#include "authenticator/consent/PasskeySheet.h"

#include <iosfwd>
#include <optional>
#include <string>

namespace kelo::inventory {

/// The questions of a user verification in a terminal. Reads from the standard input; what the user
/// types in answer to a hidden question is not shown, if that is a terminal.
class Terminal final : public authenticator::VerificationConversation {
public:
    /// The stream must outlive this.
    explicit Terminal(std::ostream& output) : output(output) {}

    Task<std::optional<SecretText>> ask(authenticator::VerificationPrompt prompt) override;
    void showInformation(std::string text) override;
    void showError(std::string text) override;
    /// A user cancels by ending the program, or its input.
    void onCancel(std::function<void()>) override {}

    /// One line of what the user types. Nothing at the end of the input. Blocks.
    std::optional<SecretText> readLine(const std::string& question, bool echo);

private:
    std::ostream& output;
};

} // namespace kelo::inventory
