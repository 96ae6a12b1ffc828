#include "linux/gtk/main/FindBar.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/Style.h"
#include "linux/gtk/main/ContentArea.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/eventcontrollerkey.h>

#include <utility>

namespace kelo::gtk {

namespace {

constexpr int entryWidthInCharacters = 28;

} // namespace

FindBar::FindBar(ContentArea& content)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 6), content(content) {
    add_css_class("kelo-notice");
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_SEARCH);
    setAccessibleName(*this, translated("Find in page"));
    set_visible(false);
    buildEntry();
    buildButtons();
    observer = std::make_shared<const std::function<void(unsigned)>>(
        [this](unsigned places) { showCount(places); });
}

void FindBar::buildEntry() {
    entry.set_max_width_chars(entryWidthInCharacters);
    entry.set_hexpand();
    entry.set_halign(Gtk::Align::START);
    entry.set_property("placeholder-text", Glib::ustring(translated("Find in page")));
    setAccessibleName(entry, translated("Find in page"));
    entry.signal_search_changed().connect([this] { search(); });
    entry.signal_stop_search().connect([this] { close(); });
    entry.signal_activate().connect([this] { next(); });
    // The toolkit's own keys for these do not leave the entry.
    entry.signal_next_match().connect([this] { next(); });
    entry.signal_previous_match().connect([this] { previous(); });
    const auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint key, guint, Gdk::ModifierType modifiers) {
            const bool isEnter = key == GDK_KEY_Return || key == GDK_KEY_KP_Enter;
            const bool isShifted =
                (modifiers & Gdk::ModifierType::SHIFT_MASK) != Gdk::ModifierType{};
            if (!isEnter || !isShifted)
                return false;
            previous();
            return true;
        },
        false);
    entry.add_controller(keys);
    append(entry);
    count.add_css_class("kelo-figures");
    append(count);
}

void FindBar::buildButtons() {
    addButton(previousButton, "go-up-symbolic", translated("Previous"), [this] { previous(); });
    addButton(nextButton, "go-down-symbolic", translated("Next"), [this] { next(); });
    addButton(closeButton, "window-close-symbolic", translated("Close"), [this] { close(); });
}

void FindBar::addButton(Gtk::Button& button, const char* icon, const std::string& name,
                        std::function<void()> action) {
    button.set_icon_name(icon);
    button.set_has_frame(false);
    button.set_tooltip_text(name);
    setAccessibleName(button, name);
    button.signal_clicked().connect(std::move(action));
    append(button);
}

window::HostedPage* FindBar::page() {
    auto* const page = content.page();
    if (page)
        page->controls().setFindObserver(observer);
    return page;
}

void FindBar::open() {
    const bool wasOpen = get_visible();
    set_visible(true);
    entry.grab_focus();
    entry.select_region(0, -1);
    if (!wasOpen)
        search();
}

void FindBar::search() {
    if (!get_visible())
        return;
    if (auto* const shown = page())
        shown->controls().find(entry.get_text().raw());
}

void FindBar::next() {
    if (!get_visible() || !hasText())
        open();
    else if (auto* const shown = page())
        shown->controls().findNext();
}

void FindBar::previous() {
    if (!get_visible() || !hasText())
        open();
    else if (auto* const shown = page())
        shown->controls().findPrevious();
}

void FindBar::close() {
    if (auto* const shown = page())
        shown->controls().endFind();
    set_visible(false);
    content.takeFocus();
}

void FindBar::showCount(unsigned places) {
    const bool isMissing = hasText() && places == 0;
    setClass(count, "kelo-red", isMissing);
    nextButton.set_sensitive(places > 0);
    previousButton.set_sensitive(places > 0);
    std::string text;
    if (isMissing)
        text = translated("Not found");
    else if (hasText())
        text = translatedCount("%1 place", "%1 places", places);
    if (count.get_text().raw() == text)
        return;
    count.set_text(text);
    if (!text.empty())
        announceNews(count, text);
}

} // namespace kelo::gtk
