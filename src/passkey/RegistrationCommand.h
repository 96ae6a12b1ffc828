#pragma once

#include "passkey/PasskeyRegistrar.h"
#include "platform/HttpCookie.h"
#include "platform/SceneGraph.h"
#include "platform/SecretText.h"
#include "platform/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelo {

/// The user's way into passkey registration: the "Account" menu, the prompt for a password or code,
/// and the alert with the outcome.
class RegistrationCommand {
public:
    /// Reads every cookie of the web view's store.
    using CookieReader = std::function<platform::Task<std::vector<platform::HttpCookie>>()>;

    RegistrationCommand(std::shared_ptr<PasskeyRegistrar> registrar, CookieReader currentCookies);

    /// One item, disabled while a registration runs; choosing it starts a run.
    platform::Menu menu() const;

    /// The cookies, the prompt, the registration, the alert. Never fails.
    static platform::Task<void> run(std::shared_ptr<PasskeyRegistrar> registrar,
                                    CookieReader currentCookies);

    /// What the user typed, without the blanks and tabs around it; nothing when they cancelled or
    /// typed nothing else.
    static platform::Task<std::optional<platform::SecretText>> promptForPasswordOrCode();

private:
    std::shared_ptr<PasskeyRegistrar> registrar;
    CookieReader currentCookies;
};

} // namespace kelo
