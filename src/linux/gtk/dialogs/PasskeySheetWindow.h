#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "base/Translation.h"
#include "linux/gtk/dialogs/ConfirmationGuard.h"
#include "linux/gtk/dialogs/SecretEntry.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "posix/MemoryShield.h"

#include <gtkmm/button.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/spinner.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace kelo::gtk {

/// The window of the passkey sheet. It opens with showConsent() and then shows the questions and
/// messages of the user verification.
class PasskeySheetWindow final : public ModalWindow {
public:
    struct Actions {
        std::function<void(std::size_t account)> agreed;
        std::function<void(SecretText answer)> answered;
        std::function<void()> cancelled;
    };
    PasskeySheetWindow(Gtk::Window* parent, SteadyNow now, Actions actions);
    ~PasskeySheetWindow() override;

    void showConsent(const authenticator::ConsentRequest& request);
    void showQuestion(const authenticator::VerificationPrompt& prompt);
    void showInformation(const std::string& text);
    void showError(const std::string& text);

protected:
    void dismissed() override;

private:
    void buildHeading();
    void buildAccounts();
    void buildVerification();
    void buildButtons();
    void fillAccounts(const std::vector<std::string>& names);
    void proceed();
    void startWaiting();
    void updateStatus();
    void updateLook();
    bool refusesEnter() const;
    std::size_t chosenAccount() const;

    /// Who has to act next: the user, by agreeing or by answering, or the program.
    enum class Phase { consent, question, waiting };
    /// The line in the middle. The placeholder is shown while there is nothing else to say.
    struct Status {
        enum class Kind { none, placeholder, information, error } kind = Kind::none;
        std::string text;
    };

    const posix::MemoryShield shield;
    Actions actions;
    Phase phase = Phase::waiting;
    Status status;

    Gtk::Image icon;
    Gtk::Label title;
    Gtk::Label explanation;
    Gtk::Label accountsCaption;
    Gtk::ScrolledWindow accountsScroll;
    Gtk::Box accounts{Gtk::Orientation::VERTICAL, 0};
    std::vector<Gtk::CheckButton*> choices;
    Gtk::Box statusLine{Gtk::Orientation::HORIZONTAL, 8};
    Gtk::Spinner spinner;
    Gtk::Label statusText;
    Gtk::Label question;
    Gtk::Box answerPlace;
    std::unique_ptr<SecretEntry> answer;
    Gtk::Button cancelButton{translated("Cancel")};
    Gtk::Button continueButton{translated("Continue")};
    ConfirmationGuard guard;
};

} // namespace kelo::gtk
