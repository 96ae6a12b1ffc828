#include "linux/gtk/windows/PermissionsWindow.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <gtkmm/label.h>

#include <utility>

namespace kelo::gtk {

using permission::Answer;
using permission::Capability;

namespace {

// In the order of the values that they name.
constexpr std::array capabilityNames = {untranslated("Microphone"), untranslated("Camera"),
                                        untranslated("Notifications")};
constexpr std::array answerNames = {untranslated("Ask"), untranslated("Allow"),
                                    untranslated("Don’t Allow")};

std::string nameOf(Capability capability) {
    return translated(capabilityNames.at(static_cast<std::size_t>(capability)));
}

std::string nameOf(Answer answer) {
    return translated(answerNames.at(static_cast<std::size_t>(answer)));
}

// The toolkit says of these buttons whether they are pressed, as if each stood for itself.
void showAsChosen(Gtk::ToggleButton& button) {
    gtk_accessible_update_state(
        GTK_ACCESSIBLE(button.gobj()), GTK_ACCESSIBLE_STATE_CHECKED,
        button.get_active() ? GTK_ACCESSIBLE_TRISTATE_TRUE : GTK_ACCESSIBLE_TRISTATE_FALSE, -1);
}

} // namespace

PermissionsWindow::PermissionsWindow(std::shared_ptr<permission::Permissions> given,
                                     std::function<void()> closed)
    : ProgramWindow(std::move(closed)), permissions(std::move(given)) {
    set_title(translated("Permissions"));
    add_css_class("kelo-main");
    set_titlebar(header);
    set_resizable(false);
    rows.set_selection_mode(Gtk::SelectionMode::NONE);
    rows.add_css_class("kelo-group");
    setAccessibleName(rows, translated("Permissions"));
    for (std::size_t index = 0; index < permission::capabilities.size(); ++index)
        addRow(permission::capabilities[index], buttonsOf[index]);
    auto* note = Gtk::make_managed<Gtk::Label>(
        translated("Microphone and camera are off while the main window is closed."));
    note->set_halign(Gtk::Align::START);
    note->add_css_class("kelo-caption");
    note->add_css_class("kelo-dim");
    column.set_margin(16);
    column.append(rows);
    column.append(*note);
    set_child(column);
    draw();
    for (auto& button : buttonsOf.front())
        if (button.get_active())
            set_focus(button); // the keyboard begins where a radio group is entered
    redrawing.emplace(std::vector<std::shared_ptr<ObservableObject>>{permissions},
                      [this] { draw(); });
    whenEscapeIsPressed(*this, [this] {
        close();
        return true;
    });
}

void PermissionsWindow::addRow(Capability capability, Buttons& buttons) {
    auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 24);
    auto* label = Gtk::make_managed<Gtk::Label>(nameOf(capability));
    label->set_hexpand();
    label->set_halign(Gtk::Align::START);
    auto* choice = Gtk::make_managed<Gtk::Box>();
    choice->add_css_class("linked");
    setAccessibleRole(*choice, GTK_ACCESSIBLE_ROLE_RADIO_GROUP);
    setAccessibleName(*choice, nameOf(capability));
    for (std::size_t index = 0; index < answers.size(); ++index) {
        auto& button = buttons[index];
        button.set_label(nameOf(answers[index]));
        setAccessibleName(button, nameOf(capability) + ": " + nameOf(answers[index]));
        setAccessibleRole(button, GTK_ACCESSIBLE_ROLE_RADIO);
        showAsChosen(button);
        if (index > 0)
            button.set_group(buttons.front());
        button.signal_toggled().connect([this, capability, answer = answers[index], &button] {
            showAsChosen(button);
            if (!isDrawing && button.get_active())
                permissions->remember(capability, answer);
        });
        button.add_css_class("kelo-choice");
        choice->append(button);
    }
    line->append(*label);
    line->append(*choice);
    rows.append(*line);
    auto* row = dynamic_cast<Gtk::ListBoxRow*>(line->get_parent());
    row->set_activatable(false);
    row->set_focusable(false); // the buttons take the keyboard
    setAccessibleName(*row, nameOf(capability));
}

void PermissionsWindow::draw() {
    isDrawing = true;
    for (std::size_t row = 0; row < buttonsOf.size(); ++row)
        for (std::size_t index = 0; index < answers.size(); ++index)
            if (permissions->answer(permission::capabilities[row]) == answers[index])
                buttonsOf[row][index].set_active();
    isDrawing = false;
}

} // namespace kelo::gtk
