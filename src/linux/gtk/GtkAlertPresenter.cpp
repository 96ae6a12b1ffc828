#include "linux/gtk/GtkAlertPresenter.h"

#include "linux/gtk/AlertDialog.h"
#include "linux/gtk/WindowHandle.h"
#include "platform/Continuation.h"

#include <optional>

namespace kelo::desktop {

namespace {

Gtk::Window* windowInUse(platform::Application& application) {
    if (auto* key = WindowHandle::resolve(application.keyWindow()))
        return key;
    for (const auto& window : application.windows())
        if (auto* recent = WindowHandle::resolve(window))
            return recent;
    return nullptr;
}

} // namespace

GtkAlertPresenter::GtkAlertPresenter(platform::Application& application)
    : application(application) {}

platform::Task<platform::AlertOutcome> GtkAlertPresenter::runModal(platform::Alert alert) {
    std::optional<AlertDialog> dialog;
    auto* parent = windowInUse(application);
    co_return co_await platform::withCheckedContinuation<platform::AlertOutcome>(
        [&dialog, &alert, parent](platform::CheckedContinuation<platform::AlertOutcome> answered) {
            dialog.emplace(alert, parent, [answered](platform::AlertOutcome outcome) {
                answered.resume(std::move(outcome));
            });
            dialog->present();
        });
}

} // namespace kelo::desktop
