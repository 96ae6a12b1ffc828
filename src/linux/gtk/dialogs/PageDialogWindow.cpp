#include "linux/gtk/dialogs/PageDialogWindow.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gtk/dialogs/DialogText.h"
#include "linux/gtk/kit/Accessibility.h"

#include <utility>

namespace kelo::gtk {

using window::PageQuestionKind;

namespace {

/// In pixels: less than elsewhere, because an entry and a check box may stand below.
constexpr int tallestText = 200;

std::string headingOf(const window::PageQuestion& question) {
    if (question.kind == PageQuestionKind::beforeUnload)
        return translated("Leave this page?");
    if (question.host.empty())
        return translated("This page says");
    return translated("%1 says", {question.host});
}

// What a page would like to say before it is left is often used to keep people from leaving.
std::string messageOf(const window::PageQuestion& question) {
    if (question.kind != PageQuestionKind::beforeUnload)
        return shownText(question.message, longestDialogText);
    if (question.host.empty())
        return translated("What you have entered may not be saved.");
    return translated("What you have entered on %1 may not be saved.", {question.host});
}

} // namespace

PageDialogWindow::PageDialogWindow(const window::PageQuestion& question, Gtk::Window* parent,
                                   SteadyNow now,
                                   std::function<void(const window::PageAnswer&)> answered)
    : ModalWindow(parent), answered(std::move(answered)), guard(*this, std::move(now)) {
    const std::string heading = headingOf(question);
    const std::string message = messageOf(question);
    set_title(heading);
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_ALERT_DIALOG);
    addTexts(heading, message);
    if (question.kind == PageQuestionKind::prompt)
        addEntry(question, message.empty() ? heading : message);
    if (question.mayBeSilenced)
        addRefusal();
    addButtons(question.kind);
}

void PageDialogWindow::addTexts(const std::string& heading, const std::string& message) {
    column.append(*makeDialogText(heading, "kelo-title"));
    if (message.empty())
        return;
    auto* text = makeDialogText(message, "kelo-body");
    text->set_selectable();
    // Lists and paragraphs are hard to read about a middle line.
    if (message.find('\n') != std::string::npos) {
        text->set_justify(Gtk::Justification::LEFT);
        text->set_xalign(0);
    }
    column.append(*makeDialogScroll(*text, tallestText));
    setAccessibleDescription(*this, message);
}

void PageDialogWindow::addEntry(const window::PageQuestion& question, const std::string& name) {
    entry = Gtk::make_managed<Gtk::Entry>();
    entry->set_text(shownText(question.defaultText, longestDialogText));
    entry->set_activates_default();
    setAccessibleName(*entry, name);
    column.append(*entry);
}

void PageDialogWindow::addRefusal() {
    refusal = Gtk::make_managed<Gtk::CheckButton>(translated("Do not let this page ask again"));
    refusal->set_halign(Gtk::Align::CENTER);
    column.append(*refusal);
}

void PageDialogWindow::addButtons(PageQuestionKind kind) {
    auto* row = makeButtonRow();
    const bool leaves = kind == PageQuestionKind::beforeUnload;
    if (kind != PageQuestionKind::alert)
        row->append(*makeButton(leaves ? translated("Stay") : translated("Cancel"), false));
    auto* const affirmative = makeButton(leaves ? translated("Leave") : translated("OK"), true);
    row->append(*affirmative);
    column.append(*row);
    affirmative->add_css_class("suggested-action");
    affirmative->set_receives_default();
    set_default_widget(*affirmative);
    if (entry)
        entry->grab_focus();
    else
        affirmative->grab_focus();
}

Gtk::Button* PageDialogWindow::makeButton(const std::string& label, bool confirms) {
    auto* button = Gtk::make_managed<Gtk::Button>(label);
    button->set_hexpand();
    button->signal_clicked().connect([this, confirms] { answer(confirms); });
    return button;
}

void PageDialogWindow::dismissed() {
    answer(false);
}

void PageDialogWindow::answer(bool confirms) {
    const auto tell = std::exchange(answered, nullptr);
    if (!tell)
        return;
    window::PageAnswer answer{confirms, "", refusal && refusal->get_active()};
    if (entry)
        answer.text = entry->get_text();
    set_visible(false);
    tell(answer);
}

} // namespace kelo::gtk
