#include "linux/gtk/dialogs/PasskeySheetWindow.h"

#include "base/ShownText.h"
#include "base/Translation.h"
#include "linux/gtk/dialogs/DialogText.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"
#include "linux/gtk/kit/Style.h"

#include <gdk/gdkkeysyms.h>
#include <glibmm/markup.h>
#include <gtkmm/eventcontrollerkey.h>

#include <utility>

namespace kelo::gtk {

namespace {

constexpr int sheetWidth = 380;
constexpr int tallestAccountList = 200;
constexpr int iconSize = 48;
constexpr int textWidthInCharacters = 44;

void wrapCentred(Gtk::Label& label) {
    wrapLines(label);
    label.set_halign(Gtk::Align::CENTER);
    label.set_justify(Gtk::Justification::CENTER);
}

std::string titleOf(authenticator::Ceremony ceremony) {
    switch (ceremony) {
    case authenticator::Ceremony::registration:
        return translated("Create a passkey?");
    case authenticator::Ceremony::deletion:
        return translated("Delete this passkey?");
    case authenticator::Ceremony::signIn:
        break;
    }
    return translated("Sign in with a passkey?");
}

/// In the toolkit's markup.
std::string explanationOf(const authenticator::ConsentRequest& request) {
    if (request.ceremony == authenticator::Ceremony::deletion)
        return Glib::Markup::escape_text(request.warning);
    const std::string who =
        "<b>" + Glib::Markup::escape_text(request.relyingPartyIdentifier).raw() + "</b>";
    if (request.ceremony == authenticator::Ceremony::registration)
        return translated("%1 asks to keep a passkey for you on this computer.", {who});
    return translated("%1 asks you to sign in with a passkey that is kept on this computer.",
                      {who});
}

Gtk::Label* makeAccount(const std::string& name) {
    auto* label = Gtk::make_managed<Gtk::Label>(name);
    label->set_ellipsize(Pango::EllipsizeMode::END);
    label->set_hexpand();
    label->set_has_tooltip();
    label->signal_query_tooltip().connect(
        [label, name](int, int, bool, const Glib::RefPtr<Gtk::Tooltip>& tooltip) {
            tooltip->set_text(name);
            return label->get_layout()->is_ellipsized(); // otherwise it would say nothing new
        },
        false);
    return label;
}

} // namespace

PasskeySheetWindow::PasskeySheetWindow(Gtk::Window* parent, SteadyNow now, Actions actions)
    : ModalWindow(parent),
      actions(std::move(actions)),
      guard(*this, std::move(now), [this] { return refusesEnter(); }) {
    column.set_size_request(sheetWidth, -1);
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_DIALOG);
    buildHeading();
    buildAccounts();
    buildVerification();
    buildButtons();
}

// Otherwise the window would keep a pointer to its default button, which is destroyed first.
PasskeySheetWindow::~PasskeySheetWindow() {
    unset_default_widget();
}

void PasskeySheetWindow::buildHeading() {
    icon.set_from_icon_name(iconName("person.badge.key"));
    icon.set_pixel_size(iconSize);
    icon.add_css_class("kelo-sheet-icon");
    setAccessibleRole(icon, GTK_ACCESSIBLE_ROLE_PRESENTATION);
    title.add_css_class("kelo-title");
    wrapCentred(title);
    wrapCentred(explanation);
    explanation.add_css_class("kelo-body");
    column.append(icon);
    column.append(title);
    column.append(explanation);
}

void PasskeySheetWindow::buildAccounts() {
    accountsCaption.add_css_class("kelo-caption");
    accountsCaption.add_css_class("kelo-dim");
    accounts.add_css_class("kelo-accounts");
    accountsScroll.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    accountsScroll.set_propagate_natural_height();
    accountsScroll.set_max_content_height(tallestAccountList);
    accountsScroll.set_child(accounts);
    // Enter agrees, as everywhere else in the sheet. The space bar and the arrow keys choose.
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    keys->signal_key_pressed().connect(
        [this](guint key, guint, Gdk::ModifierType) {
            if (key != GDK_KEY_Return && key != GDK_KEY_KP_Enter && key != GDK_KEY_ISO_Enter)
                return false;
            proceed();
            return true;
        },
        false);
    accounts.add_controller(keys);
    column.append(accountsCaption);
    column.append(accountsScroll);
}

void PasskeySheetWindow::buildVerification() {
    statusLine.set_halign(Gtk::Align::CENTER);
    statusLine.append(spinner);
    statusLine.append(statusText);
    wrapCentred(statusText);
    setAccessibleRole(statusText, GTK_ACCESSIBLE_ROLE_ALERT);
    statusLine.set_visible(false);
    statusLine.set_focusable();
    setAccessibleRole(statusLine, GTK_ACCESSIBLE_ROLE_GROUP);
    question.set_halign(Gtk::Align::START);
    wrapLines(question);
    question.set_max_width_chars(textWidthInCharacters);
    question.set_visible(false);
    answerPlace.set_visible(false);
    column.append(statusLine);
    column.append(question);
    column.append(answerPlace);
}

void PasskeySheetWindow::buildButtons() {
    auto* row = makeButtonRow();
    cancelButton.set_hexpand();
    continueButton.set_hexpand();
    cancelButton.signal_clicked().connect([this] { dismissed(); });
    continueButton.signal_clicked().connect([this] { proceed(); });
    continueButton.set_receives_default();
    row->append(cancelButton);
    row->append(continueButton);
    column.append(*row);
    set_default_widget(continueButton);
}

void PasskeySheetWindow::showConsent(const authenticator::ConsentRequest& request) {
    phase = Phase::consent;
    title.set_text(titleOf(request.ceremony));
    set_title(title.get_text());
    balanceLines(title, textWidthInCharacters);
    explanation.set_markup(explanationOf(request));
    balanceLines(explanation, textWidthInCharacters);
    fillAccounts(request.accountNames);
    const bool isDeletion = request.ceremony == authenticator::Ceremony::deletion;
    if (isDeletion)
        continueButton.set_label(translated("Delete"));
    setClass(continueButton, "suggested-action", !isDeletion);
    setClass(continueButton, "destructive-action", isDeletion);
    updateLook();
    present();
    if (isDeletion)
        cancelButton.grab_focus(); // what cannot be undone is not a matter of one key
    else if (choices.empty())
        continueButton.grab_focus();
    else
        choices.front()->grab_focus();
}

void PasskeySheetWindow::fillAccounts(const std::vector<std::string>& names) {
    choices.clear();
    while (auto* row = accounts.get_first_child())
        accounts.remove(*row);
    accountsCaption.set_visible(!names.empty());
    accountsScroll.set_visible(!names.empty());
    const bool isChoice = names.size() > 1;
    accountsCaption.set_text(isChoice ? translated("Choose an account") : translated("Account"));
    accountsCaption.set_halign(isChoice ? Gtk::Align::START : Gtk::Align::CENTER);
    // A frame around the only one would look like an entry to type into.
    setClass(accountsScroll, "kelo-group", isChoice);
    setClass(accountsScroll, "kelo-only-account", !isChoice);
    for (const auto& chosenByService : names) {
        const std::string name = shownName(chosenByService);
        auto* account = makeAccount(name);
        account->set_xalign(isChoice ? 0 : 0.5F);
        if (!isChoice) {
            accounts.append(*account);
            return;
        }
        auto* choice = Gtk::make_managed<Gtk::CheckButton>();
        choice->set_child(*account);
        setAccessibleName(*choice, name);
        if (choices.empty())
            choice->set_active();
        else
            choice->set_group(*choices.front());
        accounts.append(*choice);
        choices.push_back(choice);
    }
}

std::size_t PasskeySheetWindow::chosenAccount() const {
    for (std::size_t index = 0; index < choices.size(); ++index)
        if (choices[index]->get_active())
            return index;
    return 0;
}

void PasskeySheetWindow::showQuestion(const authenticator::VerificationPrompt& prompt) {
    phase = Phase::question;
    // What the verification said before stays above the question.
    if (status.kind == Status::Kind::placeholder)
        status = {};
    answer.reset(); // first, so that there are never two entries
    answer = std::make_unique<SecretEntry>(prompt.echo ? SecretEntry::Display::visible
                                                       : SecretEntry::Display::masked);
    answer->set_hexpand();
    answer->setName(prompt.text);
    answerPlace.append(*answer);
    question.set_text(prompt.text);
    updateLook();
    guard.restart();
    present();
    answer->focus();
}

void PasskeySheetWindow::showInformation(const std::string& text) {
    status = {Status::Kind::information, text};
    updateLook();
}

void PasskeySheetWindow::showError(const std::string& text) {
    status = {Status::Kind::error, text};
    updateLook();
}

void PasskeySheetWindow::proceed() {
    switch (phase) {
    case Phase::consent:
        startWaiting();
        actions.agreed(chosenAccount());
        break;
    case Phase::question: {
        auto text = answer->take();
        startWaiting();
        actions.answered(std::move(text));
        break;
    }
    case Phase::waiting:
        break;
    }
}

void PasskeySheetWindow::startWaiting() {
    phase = Phase::waiting;
    status = {Status::Kind::placeholder, translated("One moment…")};
    updateStatus();
    // On Cancel, a second Enter would end what the first one has begun. Here a screen reader says
    // what is waited for. The focus moves before the entry disappears: the toolkit would hand it to
    // Cancel.
    set_focus(statusLine);
    updateLook();
}

// Each wrong answer counts towards the locking of the account, and an empty one is nearly always a
// slip. For modules that wait for just that, the Continue button gives it.
bool PasskeySheetWindow::refusesEnter() const {
    return phase == Phase::question && answer->isEmpty() && get_focus() != &cancelButton;
}

void PasskeySheetWindow::updateLook() {
    updateStatus();
    for (auto* choice : choices)
        choice->set_sensitive(phase == Phase::consent);
    // Only hidden, because the entry may still be inside its own event handling. The next question
    // replaces it.
    question.set_visible(phase == Phase::question);
    answerPlace.set_visible(phase == Phase::question);
    continueButton.set_sensitive(phase != Phase::waiting);
}

void PasskeySheetWindow::updateStatus() {
    const bool isError = status.kind == Status::Kind::error;
    setClass(statusText, "kelo-red", isError);
    statusText.set_text(status.text);
    balanceLines(statusText, textWidthInCharacters);
    setAccessibleName(statusLine, status.text);
    spinner.set_visible(phase == Phase::waiting && !isError);
    spinner.set_spinning(spinner.get_visible());
    statusLine.set_visible(status.kind != Status::Kind::none);
}

void PasskeySheetWindow::dismissed() {
    phase = Phase::waiting;
    if (answer)
        answer->take();
    set_visible(false);
    actions.cancelled();
}

} // namespace kelo::gtk
