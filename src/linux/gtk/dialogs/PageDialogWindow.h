#pragma once

#include "linux/gtk/dialogs/ConfirmationGuard.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "linux/window/PageDialogs.h"

#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/entry.h>

#include <functional>
#include <string>

namespace kelo::gtk {

/// The dialog for what a page says or asks. Enter presses the affirmative button; Escape and
/// closing the dialog cancel. It disappears from the screen when it is answered; its owner destroys
/// it later.
class PageDialogWindow final : public ModalWindow {
public:
    /// answered is called at most once.
    PageDialogWindow(const window::PageQuestion& question, Gtk::Window* parent, SteadyNow now,
                     std::function<void(const window::PageAnswer&)> answered);

protected:
    void dismissed() override;

private:
    void addTexts(const std::string& heading, const std::string& message);
    void addEntry(const window::PageQuestion& question, const std::string& name);
    void addRefusal();
    void addButtons(window::PageQuestionKind kind);
    Gtk::Button* makeButton(const std::string& label, bool confirms);
    void answer(bool confirms);

    Gtk::Entry* entry = nullptr;         ///< only of a prompt
    Gtk::CheckButton* refusal = nullptr; ///< of more dialogs
    std::function<void(const window::PageAnswer&)> answered;
    ConfirmationGuard guard;
};

} // namespace kelo::gtk
