#include "linux/gtk/dialogs/GtkPasskeySheet.h"

#include "base/async/Continuation.h"
#include "base/async/MainLoop.h"
#include "linux/gtk/dialogs/PasskeySheetWindow.h"
#include "linux/gtk/kit/ProgramWindow.h"

#include <optional>
#include <utility>

namespace kelo::gtk {

namespace {

class GtkPasskeySheet final : public authenticator::PasskeySheet {
public:
    GtkPasskeySheet(Gtk::Window* parent, SteadyNow now);

    Task<std::optional<std::size_t>> confirm(authenticator::ConsentRequest request) override;
    Task<std::optional<SecretText>> ask(authenticator::VerificationPrompt prompt) override;
    void showInformation(std::string text) override;
    void showError(std::string text) override;
    void onCancel(std::function<void()> action) override;

private:
    using Consent = std::optional<std::size_t>;
    using Answer = std::optional<SecretText>;

    void agreed(std::size_t account);
    void answered(SecretText text);
    void cancelled();

    bool isCancelled = false; ///< the window has disappeared and does not open again
    std::optional<CheckedContinuation<Consent>> consent;
    std::optional<CheckedContinuation<Answer>> answer;
    /// Shared, so that a pending cancellation can detect that the sheet was destroyed.
    std::shared_ptr<std::function<void()>> cancelAction = std::make_shared<std::function<void()>>();
    PasskeySheetWindow window;
};

GtkPasskeySheet::GtkPasskeySheet(Gtk::Window* parent, SteadyNow now)
    : window(parent, std::move(now),
             {[this](std::size_t account) { agreed(account); },
              [this](SecretText text) { answered(std::move(text)); }, [this] { cancelled(); }}) {}

// The coroutines use the sheet only before they suspend, because it may be destroyed when they
// resume.

Task<std::optional<std::size_t>> GtkPasskeySheet::confirm(authenticator::ConsentRequest request) {
    if (isCancelled)
        co_return std::nullopt;
    window.showConsent(request);
    co_return co_await withCheckedContinuation<Consent>(
        [this](CheckedContinuation<Consent> asked) { consent = std::move(asked); });
}

Task<std::optional<SecretText>> GtkPasskeySheet::ask(authenticator::VerificationPrompt prompt) {
    if (isCancelled)
        co_return std::nullopt;
    window.showQuestion(prompt);
    co_return co_await withCheckedContinuation<Answer>(
        [this](CheckedContinuation<Answer> asked) { answer = std::move(asked); });
}

void GtkPasskeySheet::showInformation(std::string text) {
    if (!isCancelled)
        window.showInformation(text);
}

void GtkPasskeySheet::showError(std::string text) {
    if (!isCancelled)
        window.showError(text);
}

void GtkPasskeySheet::onCancel(std::function<void()> action) {
    *cancelAction = std::move(action);
}

void GtkPasskeySheet::agreed(std::size_t account) {
    if (const auto asked = std::exchange(consent, std::nullopt))
        asked->resume(account);
}

void GtkPasskeySheet::answered(SecretText text) {
    if (const auto asked = std::exchange(answer, std::nullopt))
        asked->resume(std::move(text));
}

void GtkPasskeySheet::cancelled() {
    if (std::exchange(isCancelled, true))
        return;
    if (const auto asked = std::exchange(consent, std::nullopt))
        asked->resume(std::nullopt);
    if (const auto asked = std::exchange(answer, std::nullopt))
        asked->resume(std::nullopt);
    // In a later turn, because the action may destroy the sheet while its button is being pressed.
    MainLoop::main().post([weak = std::weak_ptr(cancelAction)] {
        const auto current = weak.lock();
        if (!current)
            return;
        if (const auto action = *current)
            action();
    });
}

} // namespace

GtkPasskeySheetFactory::GtkPasskeySheetFactory(SteadyNow now) : now(std::move(now)) {}

std::unique_ptr<authenticator::PasskeySheet>
GtkPasskeySheetFactory::makeSheet(std::shared_ptr<platform::Window> anchor) {
    return std::make_unique<GtkPasskeySheet>(WindowHandle::resolve(anchor), now);
}

} // namespace kelo::gtk
