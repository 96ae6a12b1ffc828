#include "linux/gtk/update/UpdateWindow.h"

#include "base/Translation.h"
#include "deployment/Deployment.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"
#include "linux/gtk/kit/WindowPresentation.h"

#include <utility>

namespace kelo::gtk {

namespace {

constexpr int width = 480;
constexpr int iconSize = 48;

void setText(Gtk::Label& label, const std::string& text) {
    label.set_text(text);
    label.set_visible(!text.empty());
}

void makeParagraph(Gtk::Label& label) {
    wrapLines(label);
    label.set_xalign(0);
    label.set_max_width_chars(1); // as wide as the window, not as the text
    label.set_hexpand();
}

} // namespace

UpdateWindow::UpdateWindow() {
    set_title(translated("Software Update"));
    set_resizable(false);
    add_css_class("kelo-update");
    showProgramIcon(*this);

    icon.set_from_icon_name(std::string(deployment::applicationIdentifier));
    icon.set_pixel_size(iconSize);
    setAccessibleRole(icon, GTK_ACCESSIBLE_ROLE_PRESENTATION);
    icon.set_valign(Gtk::Align::START);
    makeParagraph(heading);
    heading.add_css_class("kelo-title");
    makeParagraph(sentence);
    auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
    texts->append(heading);
    texts->append(sentence);
    texts->append(progressLine);
    texts->set_valign(Gtk::Align::CENTER);
    auto* top = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 16);
    top->append(icon);
    top->append(*texts);

    setAccessibleName(bar, translated("Progress"));
    progressText.set_xalign(0);
    progressText.add_css_class("kelo-caption");
    progressText.add_css_class("kelo-dim");
    progressText.add_css_class("kelo-figures");
    spinner.set_spinning();
    setAccessibleName(spinner, translated("Working"));
    auto* words = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
    words->append(spinner);
    words->append(progressText);
    progressLine.append(bar);
    progressLine.append(*words);

    column.set_margin(24);
    column.set_size_request(width, -1);
    column.append(*top);
    column.append(notes);
    column.append(buttons);
    set_child(column);

    const auto dismiss = [this] {
        if (const auto tell = shown.dismissed)
            tell();
        return true;
    };
    signal_close_request().connect(dismiss, false);
    whenEscapeIsPressed(*this, dismiss);
}

UpdateWindow::~UpdateWindow() {
    unset_default_widget();
    unset_child();
}

void UpdateWindow::setContent(UpdateContent content) {
    shown = std::move(content);
    setText(heading, shown.heading);
    setText(sentence, shown.sentence);
    notes.set_visible(!shown.notes.empty());
    notes.show(shown.notes, shown.openLink);
    progressLine.set_visible(shown.progress.has_value());
    if (shown.progress)
        setProgress(*shown.progress);
    addButtons(shown.choices);
}

void UpdateWindow::setProgress(const UpdateContent::Progress& progress) {
    bar.set_visible(progress.fraction.has_value());
    spinner.set_visible(!progress.fraction);
    bar.set_fraction(progress.fraction.value_or(0));
    setText(progressText, progress.text);
}

void UpdateWindow::disableChoices() {
    shown.dismissed = nullptr;
    buttons.set_sensitive(false);
}

void UpdateWindow::addButtons(const std::vector<UpdateContent::Choice>& choices) {
    buttons.set_sensitive();
    unset_default_widget();
    while (auto* old = buttons.get_first_child())
        buttons.remove(*old);
    auto* gap = Gtk::make_managed<Gtk::Box>();
    gap->set_hexpand();
    bool isGapThere = false;
    for (std::size_t index = 0; index < choices.size(); ++index) {
        const auto& choice = choices[index];
        if (!choice.apart && !std::exchange(isGapThere, true))
            buttons.append(*gap);
        auto* button = Gtk::make_managed<Gtk::Button>(choice.label);
        button->signal_clicked().connect([this, index] { choose(index); });
        buttons.append(*button);
        if (!choice.isDefault)
            continue;
        button->add_css_class("suggested-action");
        button->set_receives_default();
        set_default_widget(*button);
        button->grab_focus();
    }
    buttons.set_visible(!choices.empty());
}

void UpdateWindow::choose(std::size_t index) {
    if (index >= shown.choices.size())
        return;
    // A copy, because the callback may replace the content.
    const auto tell = shown.choices[index].chosen;
    tell();
}

} // namespace kelo::gtk
