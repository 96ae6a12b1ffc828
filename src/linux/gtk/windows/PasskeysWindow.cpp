#include "linux/gtk/windows/PasskeysWindow.h"

#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"
#include "linux/gtk/kit/Style.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/gtk/windows/PasskeyRow.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/eventcontrollerkey.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

using inventory::DeletionResult;
using inventory::Finding;
using inventory::ListedPasskey;

namespace {

constexpr int usualWidth = 620;
constexpr int usualHeight = 480;
/// What the findings may take of the window, so that the list keeps most of it.
constexpr int mostLinesOfFindings = 9;
constexpr int messageWidthInCharacters = 44;

Gtk::Widget* makeFinding(const Finding& finding) {
    auto* texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 2);
    auto* title = Gtk::make_managed<Gtk::Label>(finding.title);
    title->set_css_classes({"kelo-caption", "kelo-strong"});
    setClass(*title, "kelo-red", finding.state == Finding::State::trouble);
    auto* sentence = Gtk::make_managed<Gtk::Label>(finding.sentence);
    sentence->set_css_classes({"kelo-caption"});
    // It may name a file that somebody has to be told of.
    sentence->set_selectable();
    sentence->set_focusable(false); // only the row, because a focused label selects its text
    for (auto* label : {title, sentence}) {
        wrapLinesAtStart(*label);
        texts->append(*label);
    }
    return texts;
}

void clear(Gtk::ListBox& list) {
    while (auto* row = list.get_row_at_index(0))
        list.remove(*row);
}

} // namespace

PasskeysWindow::PasskeysWindow(std::shared_ptr<inventory::PasskeyInventory> given,
                               std::function<void()> closed)
    : ProgramWindow(std::move(closed)), inventory(std::move(given)) {
    set_title(translated("Passkeys on This Computer"));
    add_css_class("kelo-main");
    set_titlebar(header);
    set_default_size(usualWidth, usualHeight);
    build();
    watchKeys();
    whenEscapeIsPressed(*this, [this] {
        close();
        return true;
    });
    property_is_active().signal_changed().connect([this] {
        if (is_active())
            refresh();
    });
    // Seen only where the disk keeps the user waiting.
    showMessage("", translated("One moment…"));
    message.add_css_class("kelo-loading");
    refresh();
}

void PasskeysWindow::closing() {
    removal = RunningTask();
    looking = RunningTask();
    reading = RunningTask();
}

void PasskeysWindow::build() {
    rows.set_selection_mode(Gtk::SelectionMode::NONE);
    rows.add_css_class("kelo-group");
    rows.set_valign(Gtk::Align::START);
    setAccessibleName(rows, translated("Passkeys on This Computer"));
    view.set_child(rows);
    view.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    view.set_focusable(false); // its rows take the keyboard
    view.set_vexpand();
    buildMessage();
    wrapLinesAtStart(news);
    news.set_visible(false);
    findings.set_selection_mode(Gtk::SelectionMode::NONE);
    findings.add_css_class("kelo-group");
    findings.add_css_class("kelo-findings");
    setAccessibleName(findings, translated("What passkeys need here"));
    findingsLimit.set_focusable(false);
    findingsLimit.setMaximumInLines(mostLinesOfFindings);
    findingsLimit.set_visible(false);
    column.set_margin(16);
    column.append(view);
    column.append(message);
    column.append(news);
    column.append(findingsLimit);
    set_child(column);
}

// It takes the keyboard where there is no row to take it, so that a screen reader reads it out.
void PasskeysWindow::buildMessage() {
    message.set_vexpand();
    message.set_valign(Gtk::Align::CENTER);
    message.set_halign(Gtk::Align::CENTER);
    message.set_focusable();
    setAccessibleRole(message, GTK_ACCESSIBLE_ROLE_GROUP);
    messageTitle.add_css_class("kelo-title");
    for (auto* label : {&messageTitle, &messageSentence}) {
        wrapLines(*label);
        label->set_justify(Gtk::Justification::CENTER);
        message.append(*label);
    }
}

void PasskeysWindow::watchKeys() {
    auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [this](guint key, guint, Gdk::ModifierType) {
            auto* row = focusedRow();
            if (!row || (key != GDK_KEY_Delete && key != GDK_KEY_KP_Delete))
                return false;
            remove(row->passkey());
            return true;
        },
        false);
    rows.add_controller(keys);
}

void PasskeysWindow::refresh() {
    readsAgain = isReading;
    if (!std::exchange(isReading, true))
        reading = RunningTask(read());
    if (!std::exchange(isLooking, true))
        looking = RunningTask(lookAround());
}

Task<void> PasskeysWindow::read() {
    do {
        readsAgain = false;
        std::exception_ptr failure;
        std::vector<ListedPasskey> all;
        try {
            all = co_await inventory->passkeys();
        } catch (...) {
            failure = std::current_exception();
        }
        message.remove_css_class("kelo-loading");
        if (failure)
            showMessage("", localizedDescription(failure));
        else
            showPasskeys(all);
    } while (readsAgain);
    isReading = false;
}

Task<void> PasskeysWindow::lookAround() {
    showFindings(co_await inventory->findings());
    isLooking = false;
}

void PasskeysWindow::remove(const ListedPasskey& passkey) {
    if (std::exchange(isRemoving, true))
        return;
    tell("");
    removal = RunningTask(runRemoval(passkey));
}

Task<void> PasskeysWindow::runRemoval(ListedPasskey passkey) {
    std::string sentence;
    try {
        const DeletionResult result = co_await inventory->remove(std::move(passkey), handle());
        sentence = result.sentence;
    } catch (...) {
        sentence = localizedDescription(std::current_exception());
    }
    isRemoving = false;
    tell(sentence);
    refresh();
}

void PasskeysWindow::showPasskeys(const std::vector<ListedPasskey>& all) {
    if (all.empty()) {
        showMessage(translated("There is no passkey on this computer."),
                    translated("Sign in with your password, then register one from the Account "
                               "menu of Kelo’s window."));
        updateRows(all);
        return;
    }
    const auto* focused = focusedRow();
    const bool hadKeyboard = focused || !get_focus() || get_focus() == &message;
    const std::size_t place = focused ? static_cast<std::size_t>(focused->get_index()) : 0;
    updateRows(all);
    message.set_visible(false);
    view.set_visible();
    if (hadKeyboard && !focusedRow())
        focusRow(place);
}

// What has not changed stays, and with it the keyboard and the place to which the list is scrolled.
void PasskeysWindow::updateRows(const std::vector<ListedPasskey>& all) {
    const auto isGone = [&all](const PasskeyRow& row) {
        return std::ranges::find(all, row.passkey()) == all.end();
    };
    for (std::size_t index = 0; index < all.size(); ++index) {
        auto* row = rowAt(index);
        while (row && row->passkey() != all[index] && isGone(*row)) {
            rows.remove(*row);
            row = rowAt(index);
        }
        if (!row || row->passkey() != all[index])
            rows.insert(*Gtk::make_managed<PasskeyRow>(
                            all[index], [this, passkey = all[index]] { remove(passkey); }),
                        static_cast<int>(index));
    }
    while (auto* row = rowAt(all.size()))
        rows.remove(*row);
}

void PasskeysWindow::showMessage(const std::string& title, const std::string& sentence) {
    const auto* focus = get_focus();
    const bool takesKeyboard = !focus || focus == &rows || focus->is_ancestor(rows);
    messageTitle.set_text(title);
    messageTitle.set_visible(!title.empty());
    messageSentence.set_text(sentence);
    for (auto* label : {&messageTitle, &messageSentence})
        balanceLines(*label, messageWidthInCharacters);
    setAccessibleName(message, title.empty() ? sentence : title + " " + sentence);
    view.set_visible(false);
    message.set_visible();
    if (takesKeyboard)
        message.grab_focus();
}

void PasskeysWindow::showFindings(std::vector<Finding> all) {
    if (shownFindings == all)
        return;
    shownFindings = std::move(all);
    clear(findings);
    for (const Finding& finding : shownFindings) {
        findings.append(*makeFinding(finding));
        auto* row = findings.get_row_at_index(static_cast<int>(&finding - shownFindings.data()));
        row->set_activatable(false);
        setAccessibleName(*row, finding.title + ": " + finding.sentence);
    }
    findingsLimit.set_visible(!shownFindings.empty());
}

void PasskeysWindow::tell(const std::string& sentence) {
    news.set_text(sentence);
    news.set_visible(!sentence.empty());
    if (!sentence.empty())
        announceNews(news, sentence);
}

PasskeyRow* PasskeysWindow::rowAt(std::size_t index) {
    return dynamic_cast<PasskeyRow*>(rows.get_row_at_index(static_cast<int>(index)));
}

// The toolkit leaves the keyboard at a row that was removed until it draws the next frame.
PasskeyRow* PasskeysWindow::focusedRow() {
    for (Gtk::Widget* widget = get_focus(); widget; widget = widget->get_parent())
        if (auto* row = dynamic_cast<PasskeyRow*>(widget); row && row->get_parent() == &rows)
            return row;
    return nullptr;
}

void PasskeysWindow::focusRow(std::size_t index) {
    while (index > 0 && !rowAt(index))
        --index;
    if (auto* row = rowAt(index))
        row->grab_focus();
}

} // namespace kelo::gtk
