#include "linux/gtk/dialogs/GtkPasskeySheet.h"

#include "base/async/MainLoop.h"
#include "linux/gtk/kit/WindowHandle.h"

#include <utility>

namespace kelo::gtk {

GtkPasskeySheet::GtkPasskeySheet(Gtk::Window* parent)
    : window(parent,
             {[this](std::size_t account) { agreed(account); },
              [this](SecretText text) { answered(std::move(text)); }, [this] { cancelled(); }}) {}

// The coroutines touch the sheet only before they wait: when they go on, it may be gone.

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
    // In a later turn: the action may destroy the sheet, whose button is being pressed now.
    MainLoop::main().post([weak = std::weak_ptr(cancelAction)] {
        const auto current = weak.lock();
        if (!current)
            return;
        if (const auto action = *current)
            action();
    });
}

std::unique_ptr<authenticator::PasskeySheet>
GtkPasskeySheetFactory::makeSheet(std::shared_ptr<platform::Window> anchor) {
    return std::make_unique<GtkPasskeySheet>(WindowHandle::resolve(anchor));
}

} // namespace kelo::gtk
