#pragma once

#include "linux/gtk/dialogs/ConfirmationGuard.h"
#include "linux/gtk/dialogs/SecretEntry.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "platform/Alert.h"
#include "posix/MemoryShield.h"

#include <functional>
#include <memory>
#include <optional>

namespace kelo::gtk {

/// The dialog of one alert. It disappears from the screen when it is answered; its owner destroys
/// it later.
class AlertDialog final : public ModalWindow {
public:
    /// answered is called at most once.
    AlertDialog(const platform::Alert& alert, Gtk::Window* parent, SteadyNow now,
                std::function<void(platform::AlertOutcome)> answered);

protected:
    void dismissed() override;

private:
    void addTexts(const platform::Alert& alert);
    void addField(const platform::Alert& alert);
    void addButtons(const platform::Alert& alert);
    void answer(int index);

    std::optional<posix::MemoryShield> shield; ///< only with a field
    std::unique_ptr<SecretEntry> field;
    int buttonCount = 0;
    std::function<void(platform::AlertOutcome)> answered;
    ConfirmationGuard guard;
};

} // namespace kelo::gtk
