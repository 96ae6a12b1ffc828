#pragma once

#include "testing/rig/PrivateDesktop.h"

#include <functional>
#include <optional>
#include <string>

namespace kelo::rig {

/// Uses Kelo like a person: with real clicks and keys, aimed at what the accessibility tree
/// reports. Every function waits for what it acts on, and throws std::runtime_error if it does not
/// appear.
class User {
public:
    explicit User(const PrivateDesktop& desktop);

    /// Waits until it can be seen on the screen, at rest, and says where: the tree is ahead of what
    /// is drawn. A page is looked for in the main window, or in the window that is named.
    Area awaitDrawn(const Wanted& wanted, WindowId pageHolder = 0) const;
    /// Waits until it can be clicked, and clicks its middle.
    void click(const Wanted& wanted, WindowId pageHolder = 0) const;
    /// Clicks into the field, waits until it has the keyboard, and types.
    /// The same, again and again until it has an effect: a dialog takes no clicks at first.
    void clickUntil(const std::string& effect, const Wanted& wanted,
                    const std::function<bool()>& hasHadEffect) const;
    void typeInto(const Wanted& field, const std::string& text) const;
    void press(const std::string& key) const;

    /// Opens the menu of the main window's bar with the mouse, and chooses with the keyboard.
    void chooseFromMenu(const std::string& menuName, const std::string& itemName) const;

    /// Chooses with the keyboard from a menu that is open.
    void chooseFromOpenMenu(const std::string& itemName) const;

    // The page.
    void awaitLoginPage() const;
    void signInWithPassword(const std::string& email, const std::string& password) const;
    void awaitSignedIn(const std::string& firstName) const;
    void signOut() const;

    // Kelo's own windows.
    void chooseRegister() const;
    void awaitPrompt() const;
    void answerPrompt(const std::string& passwordOrCode) const;
    void pressSignInWithPasskey() const;
    void awaitSheet() const;
    /// "Continue"; waits until the sheet has taken it.
    void pressContinue() const;
    /// The same, and waits for the password question.
    void agreeOnSheet() const;
    void answerSheet(const std::string& loginPassword) const;
    /// Both.
    void confirmSheet(const std::string& loginPassword) const;
    void cancelSheet() const;
    void awaitAlert(const std::string& text) const;
    void closeAlert() const;
    /// Presses the alert's button, and waits until the alert is gone.
    void answerAlert(const std::string& buttonName) const;
    /// Waits for the red text below the sign-in button.
    void awaitError(const std::string& text) const;

private:
    std::optional<Area> placeOnScreen(const Accessible& object, WindowId pageHolder) const;
    std::optional<ScreenWindow> windowOnScreen(const Accessible& window) const;
    void awaitKeyboardInPasswordField() const;
    /// The item of an open menu that has the keyboard.
    std::optional<Accessible> focusedItem() const;
    /// Does it again until it has had its effect: a dialog that has just appeared takes no answer.
    void insist(const std::string& effect, const std::function<void()>& action,
                const std::function<bool()>& hasHadEffect) const;

    const PrivateDesktop& desktop;
};

} // namespace kelo::rig
