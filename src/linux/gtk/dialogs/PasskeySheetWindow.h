#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "linux/gtk/kit/ModalWindow.h"
#include "linux/gtk/kit/SecretEntry.h"

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

/// What the passkey sheet looks like and reports. It opens with showConsent() and then shows the
/// words of the verification in the same place.
class PasskeySheetWindow final : public ModalWindow {
public:
    struct Actions {
        std::function<void(std::size_t account)> agreed;
        std::function<void(SecretText answer)> answered;
        std::function<void()> cancelled;
    };
    PasskeySheetWindow(Gtk::Window* parent, Actions actions);
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
    void showStatus(const std::string& text, bool isError);
    void goOn();
    void becomeBusy();
    std::size_t chosenAccount() const;

    Actions actions;
    enum class Open { nothing, consent, question } open = Open::nothing;

    Gtk::Image icon;
    Gtk::Label title;
    Gtk::Label explanation;
    Gtk::Label accountsCaption;
    Gtk::ScrolledWindow accountsScroll;
    Gtk::Box accounts{Gtk::Orientation::VERTICAL, 0};
    std::vector<Gtk::CheckButton*> choices;
    Gtk::Box statusLine{Gtk::Orientation::HORIZONTAL, 8};
    Gtk::Spinner spinner;
    Gtk::Label status;
    Gtk::Label question;
    Gtk::Box answerPlace;
    std::unique_ptr<SecretEntry> answer;
    Gtk::Button cancelButton{"Cancel"};
    Gtk::Button continueButton{"Continue"};
};

} // namespace kelo::gtk
