#include "linux/gtk/dialogs/AlertDialog.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"

#include <gtkmm/adjustment.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

#include <utility>

namespace kelo::gtk {

namespace {

constexpr int textWidthInCharacters = 44;
/// In pixels: about fifteen lines, which every screen has room for.
constexpr int tallestText = 300;
/// In characters. The toolkit's time for a long word grows with the square of its length: one of
/// 10,000 letters stops the program for ten seconds.
constexpr std::size_t longestText = 2000;

Gtk::Label* makeText(const std::string& text, const char* cssClass) {
    auto* label = Gtk::make_managed<Gtk::Label>(text);
    label->set_wrap();
    label->set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    label->set_justify(Gtk::Justification::CENTER);
    label->add_css_class(cssClass);
    balanceLines(*label, textWidthInCharacters);
    return label;
}

/// Lets the user scroll what is taller than an alert should be. The reason that a service gives may
/// have any length.
Gtk::ScrolledWindow* makeScroll(Gtk::Widget& text) {
    auto* scroll = Gtk::make_managed<Gtk::ScrolledWindow>();
    scroll->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroll->set_propagate_natural_width();
    scroll->set_propagate_natural_height();
    // Always seen, because nothing else says that the text goes on.
    scroll->set_overlay_scrolling(false);
    scroll->set_max_content_height(tallestText);
    scroll->set_child(text);
    // The keyboard stops at the text only where there is something to scroll.
    scroll->set_focusable(false);
    const auto place = scroll->get_vadjustment();
    place->signal_changed().connect([scroll, adjustment = place.get()] {
        scroll->set_focusable(adjustment->get_upper() > adjustment->get_page_size());
    });
    return scroll;
}

} // namespace

AlertDialog::AlertDialog(const platform::Alert& alert, Gtk::Window* parent, SteadyNow now,
                         std::function<void(platform::AlertOutcome)> answered)
    : ModalWindow(parent),
      answered(std::move(answered)),
      guard(*this, std::move(now), [] { return false; }) {
    if (!alert.messageText.empty())
        set_title(alert.messageText);
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_ALERT_DIALOG);
    addTexts(alert);
    addField(alert);
    addButtons(alert);
}

void AlertDialog::addTexts(const platform::Alert& alert) {
    if (!alert.messageText.empty())
        column.append(*makeText(alert.messageText, "kelo-title"));
    if (alert.informativeText.empty())
        return;
    const std::string text = shortened(alert.informativeText, longestText);
    column.append(*makeScroll(*makeText(text, "kelo-body")));
    gtk_accessible_update_property(GTK_ACCESSIBLE(gobj()), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION,
                                   text.c_str(), -1);
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
    auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 12);
    row->set_homogeneous();
    row->add_css_class("kelo-buttons");
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
