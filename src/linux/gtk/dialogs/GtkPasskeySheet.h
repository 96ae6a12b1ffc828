#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "base/async/Continuation.h"
#include "linux/gtk/dialogs/PasskeySheetWindow.h"

#include <memory>
#include <optional>

namespace kelo::gtk {

/// The passkey sheet as a dialog over a window. It may be destroyed in any state, and so may the
/// tasks that wait for it; a question that is open then is never answered.
class GtkPasskeySheet final : public authenticator::PasskeySheet {
public:
    explicit GtkPasskeySheet(Gtk::Window* parent);

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

    bool isCancelled = false; ///< the window is off the screen for good
    std::optional<CheckedContinuation<Consent>> consent;
    std::optional<CheckedContinuation<Answer>> answer;
    /// Shared, so that a cancellation on its way finds out that the sheet is gone.
    std::shared_ptr<std::function<void()>> cancelAction = std::make_shared<std::function<void()>>();
    PasskeySheetWindow window;
};

/// Makes the sheets over windows of this desktop.
class GtkPasskeySheetFactory final : public authenticator::PasskeySheetFactory {
public:
    /// An anchor that is null or not on the screen gives a free-standing sheet.
    std::unique_ptr<authenticator::PasskeySheet>
    makeSheet(std::shared_ptr<platform::Window> anchor) override;
};

} // namespace kelo::gtk
