#include "passkey/Ceremonies.h"

#include "authenticator/GetAssertion.h"
#include "authenticator/MakeCredential.h"
#include "base/Failure.h"
#include "base/async/Spawn.h"

#include <glib.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kelo::bench {

namespace {

using Clock = std::chrono::steady_clock;

Task<void> record(Task<void> work, std::optional<std::string>& outcome) {
    try {
        co_await work;
        outcome = "";
    } catch (const Failure& failure) {
        outcome = failure.localizedDescription();
    }
}

} // namespace

class Ceremonies::QuickSheet final : public authenticator::PasskeySheet {
public:
    explicit QuickSheet(Ceremonies& owner, const std::string& password)
        : owner(owner), password(password) {}

    Task<std::optional<std::size_t>> confirm(authenticator::ConsentRequest) override {
        owner.continued = Clock::now();
        co_return 0;
    }
    Task<std::optional<SecretText>> ask(authenticator::VerificationPrompt) override {
        co_return SecretText(password);
    }
    void showInformation(std::string) override {}
    void showError(std::string) override {}
    void onCancel(std::function<void()>) override {}

private:
    Ceremonies& owner;
    const std::string& password;
};

class Ceremonies::QuickSheets final : public authenticator::PasskeySheetFactory {
public:
    QuickSheets(Ceremonies& owner, std::string password)
        : owner(owner), password(std::move(password)) {}
    std::unique_ptr<authenticator::PasskeySheet>
    makeSheet(std::shared_ptr<platform::Window>) override {
        return std::make_unique<QuickSheet>(owner, password);
    }

private:
    Ceremonies& owner;
    std::string password;
};

Ceremonies::Ceremonies(const std::string& transport, std::string password,
                       const std::filesystem::path& file)
    : sheets(std::make_unique<QuickSheets>(*this, std::move(password))),
      credentials(file),
      chip(transport, keyring, keyringWorker) {}

Ceremonies::~Ceremonies() {
    dropSpawnedTasks();
}

Milliseconds Ceremonies::timed(const std::function<Task<void>()>& begin) {
    std::optional<std::string> outcome;
    continued = lastTurn = Clock::now();
    spawn(record(begin(), outcome));
    const guint ticks = g_timeout_add(
        1, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (!outcome) {
        g_main_context_iteration(nullptr, TRUE);
        const auto now = Clock::now();
        pause = std::max<Milliseconds>(pause, now - lastTurn);
        lastTurn = now;
    }
    const Milliseconds taken = Clock::now() - continued;
    g_source_remove(ticks);
    if (!outcome->empty())
        throw std::runtime_error(*outcome);
    return taken;
}

Milliseconds Ceremonies::makeKey() {
    const auto make = [this]() -> Task<void> { lastKey = co_await keys.create(); };
    return timed(make);
}

Milliseconds Ceremonies::sign() {
    const auto signWithIt = [this]() -> Task<void> {
        co_await keys.sign(lastKey.keeper, lastKey.wrappedPrivateKey, Bytes(32, 0x5A));
    };
    return timed(signWithIt);
}

Milliseconds Ceremonies::verifyUser() {
    const auto verify = [this]() -> Task<void> {
        const auto sheet = sheets->makeSheet(nullptr);
        if (co_await verifier.verify(*sheet) != authenticator::VerificationOutcome::verified)
            throw Failure(FailureKind::notAllowed, "The user was not verified.", "");
    };
    return timed(verify);
}

Milliseconds Ceremonies::registration() {
    const auto perform = [this]() -> Task<void> {
        authenticator::MakeCredential operation(
            {associations, *sheets, verifier, keys, credentials, worker, clock},
            platform::PlatformPublicKeyCredentialProvider("localhost")
                .createCredentialRegistrationRequest(Bytes(32, 1), "Ada", Bytes(16, 2)),
            nullptr);
        co_await operation.run();
    };
    return timed(perform);
}

Milliseconds Ceremonies::signIn() {
    const auto perform = [this]() -> Task<void> {
        authenticator::GetAssertion operation(
            {associations, *sheets, verifier, keys, credentials, worker, clock},
            platform::PlatformPublicKeyCredentialProvider("localhost")
                .createCredentialAssertionRequest(Bytes(32, 3)),
            nullptr);
        co_await operation.run();
    };
    return timed(perform);
}

Milliseconds Ceremonies::longestPause() {
    return std::exchange(pause, Milliseconds{});
}

} // namespace kelo::bench
