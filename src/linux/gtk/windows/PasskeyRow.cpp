#include "linux/gtk/windows/PasskeyRow.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gtk/kit/Accessibility.h"

#include <gtkmm/label.h>
#include <gtkmm/tooltip.h>

#include <utility>

namespace kelo::gtk {

namespace {

/// As the user's language writes it, in the local time zone.
std::string day(std::chrono::sys_seconds time) {
    const gobject::GDateTimePointer date(
        g_date_time_new_from_unix_local(static_cast<gint64>(time.time_since_epoch().count())));
    const gobject::GText text(date ? g_date_time_format(date.get(), "%x") : nullptr);
    return text ? text.get() : "?";
}

std::string daysOf(const inventory::ListedPasskey& passkey) {
    return translated("Made on %1", {day(passkey.made)}) + " · " +
           (passkey.lastUsed ? translated("Last used on %1", {day(*passkey.lastUsed)})
                             : translated("Never used"));
}

std::string stateOf(const inventory::ListedPasskey& passkey) {
    return (passkey.isInChip ? translated("In the security chip") : translated("In software")) +
           " · " +
           (passkey.isAccepted ? translated("Accepted by the service")
                               : translated("Not yet accepted by the service"));
}

// Not wrapped: to measure lines that may wrap takes so long that hundreds of rows would stop the
// program for seconds.
Gtk::Label* makeLine(const std::string& text) {
    auto* label = Gtk::make_managed<Gtk::Label>(text);
    // At the start also where the text runs the other way than the window. Names that begin alike
    // may differ at their ends.
    label->set_halign(Gtk::Align::START);
    label->set_ellipsize(Pango::EllipsizeMode::MIDDLE);
    label->set_has_tooltip();
    label->signal_query_tooltip().connect(
        [label](int, int, bool, const Glib::RefPtr<Gtk::Tooltip>& tooltip) {
            tooltip->set_text(label->get_text());
            return label->get_layout()->is_ellipsized(); // otherwise it would say nothing new
        },
        false);
    return label;
}

} // namespace

PasskeyRow::PasskeyRow(inventory::ListedPasskey passkey, std::function<void()> askToDelete)
    : shown(std::move(passkey)), deleteButton(translated("Delete…")) {
    const std::string account = shownName(shown.account);
    const std::string service = shownName(shown.service);
    const std::string days = daysOf(shown);
    const std::string state = stateOf(shown);
    set_activatable(false);
    setAccessibleName(*this, account + ", " + service + ", " + days + " · " + state);
    addLine(account, {"kelo-strong"});
    addLine(service, {});
    addLine(days, {"kelo-caption", "kelo-dim"});
    addLine(state, {"kelo-caption", "kelo-dim"});
    texts.set_hexpand();
    deleteButton.set_valign(Gtk::Align::CENTER);
    deleteButton.signal_clicked().connect(std::move(askToDelete));
    setAccessibleName(deleteButton,
                      translated("Delete the passkey of %1 for %2…", {account, service}));
    line.append(texts);
    line.append(deleteButton);
    set_child(line);
}

void PasskeyRow::addLine(const std::string& text, const std::vector<Glib::ustring>& cssClasses) {
    auto* label = makeLine(text);
    label->set_css_classes(cssClasses);
    texts.append(*label);
}

} // namespace kelo::gtk
