#include "app/RegistrationCommand.h"

#include "base/Failure.h"
#include "base/async/Spawn.h"
#include "platform/Desktop.h"

#include <utility>

namespace kelo::app {

namespace {

/// Length of the blank at the beginning or end of the text: a tab or a Unicode space separator
/// (category Zs). Line breaks do not count.
constexpr std::string_view blanks[] = {"\t",     " ",      "\u00A0", "\u1680", "\u2000", "\u2001",
                                       "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007",
                                       "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000"};

std::string_view trimmed(std::string_view text) {
    for (bool again = true; again;) {
        again = false;
        for (const std::string_view blank : blanks) {
            if (text.starts_with(blank)) {
                text.remove_prefix(blank.size());
                again = true;
            }
            if (text.ends_with(blank)) {
                text.remove_suffix(blank.size());
                again = true;
            }
        }
    }
    return text;
}

Task<void> showResult(std::string text) {
    platform::Alert alert;
    alert.messageText = "Passkey";
    alert.informativeText = std::move(text);
    co_await platform::Desktop::current().alerts().runModal(std::move(alert));
}

} // namespace

RegistrationCommand::RegistrationCommand(std::shared_ptr<passkey::PasskeyRegistrar> registrar,
                                         CookieReader currentCookies)
    : registrar(std::move(registrar)), currentCookies(std::move(currentCookies)) {}

platform::Menu RegistrationCommand::menu() const {
    return {platform::MenuItem{"Register a Passkey on This Mac…", !registrar->busy,
                               [registrar = registrar, currentCookies = currentCookies] {
                                   spawn(run(registrar, currentCookies));
                               }}};
}

Task<void> RegistrationCommand::run(std::shared_ptr<passkey::PasskeyRegistrar> registrar,
                                    CookieReader currentCookies) {
    auto cookies = co_await currentCookies();
    auto entry = co_await promptForPasswordOrCode();
    if (!entry)
        co_return;
    std::string result;
    try {
        co_await registrar->registerPasskey(std::move(cookies), *std::move(entry));
        result = registrar->message.get().value_or("Passkey registered.");
    } catch (...) {
        result = localizedDescription(std::current_exception());
    }
    co_await showResult(std::move(result));
}

Task<std::optional<SecretText>> RegistrationCommand::promptForPasswordOrCode() {
    platform::Alert alert;
    alert.messageText = "Bevestig registratie";
    alert.informativeText = "Vul je wachtwoord óf een MFA-code in om deze passkey te registreren.";
    alert.buttons = {"Registreer", "Annuleer"};
    alert.accessoryView = platform::SecureTextField{240, 24, "Wachtwoord of MFA-code"};
    alert.accessoryIsInitialFirstResponder = true;
    const platform::AlertOutcome outcome =
        co_await platform::Desktop::current().alerts().runModal(std::move(alert));
    if (outcome.returnCode != platform::alertFirstButtonReturn)
        co_return std::nullopt;
    const std::string_view text = trimmed(outcome.fieldText.view());
    if (text.empty())
        co_return std::nullopt;
    co_return SecretText(text);
}

} // namespace kelo::app
