#pragma once

#include "base/SecretText.h"
#include "base/async/Task.h"
#include "passkey/PasskeyRegistrar.h"
#include "platform/CookieStore.h"
#include "platform/SceneGraph.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelo::app {

/// The command that registers a passkey: the "Account" menu, the prompt for a password or code, and
/// the alert with the outcome.
class RegistrationCommand {
public:
    /// Reads every cookie of the web view's store.
    using CookieReader = std::function<Task<std::vector<platform::HttpCookie>>()>;

    RegistrationCommand(std::shared_ptr<passkey::PasskeyRegistrar> registrar,
                        CookieReader currentCookies);

    /// One item, disabled while a registration runs; choosing it starts a run.
    platform::Menu menu() const;

    /// Reads the cookies, prompts, registers and shows the outcome. Never throws.
    static Task<void> run(std::shared_ptr<passkey::PasskeyRegistrar> registrar,
                          CookieReader currentCookies);

    /// What the user typed, without surrounding blanks and tabs; empty if they cancelled or typed
    /// nothing else.
    static Task<std::optional<SecretText>> promptForPasswordOrCode();

private:
    std::shared_ptr<passkey::PasskeyRegistrar> registrar;
    CookieReader currentCookies;
};

} // namespace kelo::app
