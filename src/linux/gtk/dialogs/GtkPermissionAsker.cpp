#include "linux/gtk/dialogs/GtkPermissionAsker.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "base/async/MainLoop.h"
#include "linux/gtk/dialogs/ConfirmationGuard.h"
#include "linux/gtk/dialogs/DialogText.h"
#include "linux/gtk/dialogs/KeyboardTurn.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <gtkmm/button.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

namespace {

using permission::Capability;
using Answered = permission::PermissionAsker::Answered;

std::string headingOf(const permission::Question& question) {
    const auto asksFor = [&question](Capability capability) {
        return std::ranges::find(question.capabilities, capability) != question.capabilities.end();
    };
    const std::string host = shownName(question.host);
    if (asksFor(Capability::notifications))
        return translated("Allow %1 to show notifications?", {host});
    if (!asksFor(Capability::camera))
        return translated("Allow %1 to use the microphone?", {host});
    if (!asksFor(Capability::microphone))
        return translated("Allow %1 to use the camera?", {host});
    return translated("Allow %1 to use the microphone and the camera?", {host});
}

// The toolkit keeps room for a second line where the text may wrap, even if it never does.
Gtk::Label* makeText(const std::string& text, const char* cssClass) {
    auto* label = makeDialogText(text, cssClass);
    if (label->get_text().size() < dialogTextWidth)
        label->set_wrap(false);
    return label;
}

class PermissionDialog final : public ModalWindow {
public:
    PermissionDialog(const permission::Question& question, Gtk::Window* parent, SteadyNow now,
                     Answered answered)
        : ModalWindow(parent), answered(std::move(answered)), guard(*this, std::move(now)) {
        const std::string heading = headingOf(question);
        const std::string sentence =
            translated("You can change this at any time under “Permissions” in Kelo’s menu.");
        set_title(heading);
        setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_ALERT_DIALOG);
        setAccessibleDescription(*this, sentence);
        column.append(*makeText(heading, "kelo-title"));
        column.append(*makeText(sentence, "kelo-body"));
        auto* row = makeButtonRow();
        addButton(*row, translated("Don’t Allow"), false);
        addButton(*row, translated("Allow"), true);
        column.append(*row);
        // Somebody who types into the page must not answer by the next space.
        column.set_focusable();
        column.grab_focus();
    }

    void withdraw() {
        answered = nullptr;
        set_visible(false);
    }

protected:
    void dismissed() override { answer(std::nullopt); }

private:
    void addButton(Gtk::Box& row, const std::string& label, bool allows) {
        auto* button = Gtk::make_managed<Gtk::Button>(label);
        button->set_hexpand();
        button->signal_clicked().connect([this, allows] { answer(allows); });
        row.append(*button);
        guard.guard(*button);
    }

    void answer(std::optional<bool> isAllowed) {
        const auto tell = std::exchange(answered, nullptr);
        if (!tell)
            return;
        set_visible(false);
        tell(isAllowed);
    }

    Answered answered;
    ConfirmationGuard guard;
};

/// The dialog is destroyed later, because it may be inside of its own event handling.
class OpenDialog final : public permission::PermissionAsker::Asked {
public:
    explicit OpenDialog(std::shared_ptr<PermissionDialog> dialog) : dialog(std::move(dialog)) {}
    OpenDialog(const OpenDialog&) = delete;
    OpenDialog& operator=(const OpenDialog&) = delete;
    ~OpenDialog() override {
        dialog->withdraw();
        MainLoop::main().post([last = std::move(dialog)]() mutable { last.reset(); });
    }

private:
    std::shared_ptr<PermissionDialog> dialog;
};

} // namespace

GtkPermissionAsker::GtkPermissionAsker(SteadyNow now)
    : keyboard(std::make_shared<KeyboardTurn>(std::move(now))) {}

GtkPermissionAsker::~GtkPermissionAsker() = default;

std::unique_ptr<permission::PermissionAsker::Asked>
GtkPermissionAsker::ask(GtkWidget* page, const permission::Question& question, Answered answered) {
    GtkRoot* const root = gtk_widget_get_root(page);
    auto* parent = GTK_IS_WINDOW(root) ? Glib::wrap(GTK_WINDOW(root)) : nullptr;
    const bool takesKeyboard = keyboard->isOurs(parent);
    auto dialog = std::make_shared<PermissionDialog>(
        question, parent, keyboard->clock(),
        [keyboard = keyboard, answered = std::move(answered)](std::optional<bool> isAllowed) {
            keyboard->answered();
            answered(isAllowed);
        });
    if (takesKeyboard)
        dialog->present();
    else
        showWithoutFocus(*dialog);
    return std::make_unique<OpenDialog>(std::move(dialog));
}

} // namespace kelo::gtk
