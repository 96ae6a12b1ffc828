#include "linux/gtk/main/OverlayPanel.h"

#include "base/ShownText.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"
#include "linux/gtk/kit/Style.h"

#include <gtkmm/stylecontext.h>
#include <gtkmm/window.h>

#include <cmath>

namespace kelo::gtk {

namespace {

// Wide enough for a sentence, narrow enough to read quickly.
constexpr int textWidthInCharacters = 52;
// About ten lines. The host that an error names may have any length.
constexpr std::size_t longestText = 500;

int points(double length) {
    return static_cast<int>(std::lround(length));
}

} // namespace

OverlayPanel::OverlayPanel() : Gtk::Box(Gtk::Orientation::VERTICAL) {
    add_css_class("kelo-overlay");
    get_style_context()->add_provider(outline, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
    label.set_ellipsize(Pango::EllipsizeMode::END);
    caption.set_halign(Gtk::Align::CENTER);
    setAccessibleRole(icon, GTK_ACCESSIBLE_ROLE_PRESENTATION);
    caption.append(icon);
    caption.append(label);
    button.set_child(labelArea);
    button.set_halign(Gtk::Align::CENTER);
    button.signal_clicked().connect([this] {
        // A copy, because the action may lead to a drawing that replaces it.
        if (const auto current = action)
            current();
    });
    append(button);

    text.set_halign(Gtk::Align::CENTER);
    text.set_justify(Gtk::Justification::CENTER);
    wrapLines(text);
    text.set_max_width_chars(textWidthInCharacters);
    setAccessibleRole(text, GTK_ACCESSIBLE_ROLE_ALERT);
    text.set_visible(false);
    append(text);
}

void OverlayPanel::draw(const platform::OverlayDescription& description) {
    shape(description);
    drawButton(description.button);
    drawText(description.text);
}

void OverlayPanel::shape(const platform::OverlayDescription& description) {
    set_spacing(points(description.spacing));
    std::string style = ".kelo-overlay { padding: " + std::to_string(points(description.padding)) +
                        "px; border-radius: " + std::to_string(points(description.cornerRadius)) +
                        "px; }";
    if (style == outlineStyle)
        return;
    outlineStyle = std::move(style);
    outline->load_from_data(outlineStyle);
}

void OverlayPanel::drawButton(const platform::ButtonDescription& description) {
    icon.set_visible(!description.systemImage.empty());
    if (icon.get_visible())
        icon.set_from_icon_name(iconName(description.systemImage));
    label.set_text(description.label);
    labelArea.setMaximum(points(description.labelMaximumWidth));
    setAccessibleName(button, description.label);
    setClass(button, "kelo-large", description.controlSize == platform::ControlSize::large);
    setClass(button, "suggested-action",
             description.style == platform::ButtonStyle::borderedProminent);
    action = description.action;

    // A disabled button loses the focus. A user who pressed it with the keyboard gets it back.
    if (!description.enabled && button.has_focus())
        restoresFocus = true;
    button.set_sensitive(description.enabled);
    if (description.enabled && std::exchange(restoresFocus, false)) {
        const auto* window = dynamic_cast<Gtk::Window*>(get_root());
        if (window && !window->get_focus())
            button.grab_focus();
    }
}

void OverlayPanel::drawText(const std::optional<platform::TextDescription>& description) {
    if (description) {
        setClass(text, "kelo-caption", description->font == platform::TextFont::caption);
        setClass(text, "kelo-red", description->color == platform::TextColor::red);
        text.set_text(shortened(description->text, longestText));
    }
    text.set_visible(description.has_value());
}

} // namespace kelo::gtk
