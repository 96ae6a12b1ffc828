#include "linux/gtk/dialogs/GtkAlertPresenter.h"

#include "base/async/Continuation.h"
#include "linux/gtk/dialogs/AlertDialog.h"
#include "linux/gtk/kit/ProgramWindow.h"

#include <optional>
#include <utility>

namespace kelo::gtk {

namespace {

Gtk::Window* activeOrRecentWindow(platform::Application& application) {
    if (auto* key = WindowHandle::resolve(application.keyWindow()))
        return key;
    for (const auto& window : application.windows())
        if (auto* recent = WindowHandle::resolve(window))
            return recent;
    return nullptr;
}

} // namespace

GtkAlertPresenter::GtkAlertPresenter(platform::Application& application, SteadyNow now)
    : application(application), now(std::move(now)) {}

Task<platform::AlertOutcome> GtkAlertPresenter::runModal(platform::Alert alert) {
    std::optional<AlertDialog> dialog;
    auto* parent = activeOrRecentWindow(application);
    co_return co_await withCheckedContinuation<platform::AlertOutcome>(
        [this, &dialog, &alert, parent](CheckedContinuation<platform::AlertOutcome> answered) {
            dialog.emplace(alert, parent, now, [answered](platform::AlertOutcome outcome) {
                answered.resume(std::move(outcome));
            });
            dialog->present();
        });
}

} // namespace kelo::gtk
