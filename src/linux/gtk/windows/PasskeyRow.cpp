#include "linux/gtk/windows/PasskeyRow.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"

#include <gtkmm/label.h>

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

std::string detailsOf(const inventory::ListedPasskey& passkey) {
    std::string details = translated("Made on %1", {day(passkey.made)});
    const auto add = [&details](const std::string& more) { details += " · " + more; };
    add(passkey.lastUsed ? translated("Last used on %1", {day(*passkey.lastUsed)})
                         : translated("Never used"));
    add(passkey.isInChip ? translated("In the security chip") : translated("In software"));
    add(passkey.isAccepted ? translated("Accepted by the service")
                           : translated("Not yet accepted by the service"));
    return details;
}

} // namespace

PasskeyRow::PasskeyRow(inventory::ListedPasskey passkey, std::function<void()> askToDelete)
    : shown(std::move(passkey)), deleteButton(translated("Delete…")) {
    const std::string account = shownName(shown.account);
    const std::string service = shownName(shown.service);
    const std::string details = detailsOf(shown);
    set_activatable(false);
    setAccessibleName(*this, account + ", " + service + ", " + details);
    addLine(account, {"kelo-strong"});
    addLine(service, {});
    addLine(details, {"kelo-caption", "kelo-dim"});
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
    auto* label = Gtk::make_managed<Gtk::Label>(text);
    wrapLinesAtStart(*label);
    label->set_css_classes(cssClasses);
    texts.append(*label);
}

} // namespace kelo::gtk
