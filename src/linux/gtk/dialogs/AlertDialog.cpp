#include "linux/gtk/dialogs/AlertDialog.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gtk/dialogs/DialogText.h"
#include "linux/gtk/kit/Accessibility.h"

#include <gtkmm/button.h>

#include <utility>

namespace kelo::gtk {

AlertDialog::AlertDialog(const platform::Alert& alert, Gtk::Window* parent, SteadyNow now,
                         std::function<void(platform::AlertOutcome)> answered)
    : ModalWindow(parent), answered(std::move(answered)), guard(*this, std::move(now)) {
    if (!alert.messageText.empty())
        set_title(alert.messageText);
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_ALERT_DIALOG);
    addTexts(alert);
    addField(alert);
    addButtons(alert);
}

void AlertDialog::addTexts(const platform::Alert& alert) {
    if (!alert.messageText.empty())
        column.append(*makeDialogText(alert.messageText, "kelo-title"));
    if (alert.informativeText.empty())
        return;
    const std::string text = shortened(alert.informativeText, longestDialogText);
    column.append(*makeDialogScroll(*makeDialogText(text, "kelo-body")));
    setAccessibleDescription(*this, text);
}

void AlertDialog::addField(const platform::Alert& alert) {
    if (!alert.accessoryView)
        return;
    shield.emplace();
    field = std::make_unique<SecretEntry>(SecretEntry::Display::masked);
    field->setPlaceholder(alert.accessoryView->placeholder);
    field->setName(alert.accessoryView->placeholder);
    field->set_size_request(static_cast<int>(alert.accessoryView->width),
                            static_cast<int>(alert.accessoryView->height));
    field->add_css_class("kelo-field");
    field->set_halign(Gtk::Align::CENTER);
    column.append(*field);
}

void AlertDialog::addButtons(const platform::Alert& alert) {
    const std::vector<std::string> labels =
        alert.buttons.empty() ? std::vector<std::string>{translated("OK")} : alert.buttons;
    buttonCount = static_cast<int>(labels.size());
    auto* row = makeButtonRow();
    Gtk::Button* first = nullptr;
    for (int index = 0; index < buttonCount; ++index) {
        auto* button = Gtk::make_managed<Gtk::Button>(labels[static_cast<std::size_t>(index)]);
        button->set_hexpand();
        button->signal_clicked().connect([this, index] { answer(index); });
        row->prepend(*button); // the first, affirmative button is at the end of the row
        if (index == 0)
            first = button;
    }
    column.append(*row);
    first->add_css_class("suggested-action");
    first->set_receives_default();
    set_default_widget(*first);
    if (field && alert.accessoryIsInitialFirstResponder)
        field->focus();
    else
        first->grab_focus();
}

void AlertDialog::dismissed() {
    answer(buttonCount - 1);
}

void AlertDialog::answer(int index) {
    const auto tell = std::exchange(answered, nullptr);
    if (!tell)
        return;
    platform::AlertOutcome outcome;
    outcome.returnCode = platform::alertFirstButtonReturn + index;
    if (field)
        outcome.fieldText = field->take();
    set_visible(false);
    tell(std::move(outcome));
}

} // namespace kelo::gtk
