#include "e2e/rig/User.h"

#include <algorithm>
#include <stdexcept>

namespace kelo::rig {

namespace {

/// The toplevel accessible that holds the object: among the windows of its program.
std::optional<Extents> areaOfWindowHolding(const AccessibilityBus& bus, const Accessible& object,
                                           std::string& title) {
    Accessible current = object;
    while (true) {
        const Role role = current.role();
        if (role == Role::frame || role == Role::dialog || role == Role::alert ||
            role == Role::window) {
            title = current.name();
            return current.extents();
        }
        const VariantPointer parent =
            bus.property(current.address(), "org.a11y.atspi.Accessible", "Parent");
        if (!parent || !g_variant_is_of_type(parent.get(), G_VARIANT_TYPE("(so)")))
            return std::nullopt;
        const char* busName = nullptr;
        const char* path = nullptr;
        g_variant_get(parent.get(), "(&s&o)", &busName, &path);
        if (std::string(path) == current.address().path || !*busName)
            return std::nullopt;
        current = Accessible(bus, {busName, path});
    }
}

} // namespace

User::User(const PrivateDesktop& desktop) : desktop(desktop) {}

/// The accessibility tree knows places in a window, and the X server where the windows stand. The
/// two meet by the window's size and title.
Point User::centreOnScreen(const Accessible& object) const {
    const auto windows = desktop.screen.windows();
    if (windows.empty())
        throw std::runtime_error("No window is on the screen.");
    std::string title;
    const auto area = areaOfWindowHolding(desktop.bus, object, title);
    const ScreenWindow* shownIn = nullptr;
    if (area) {
        for (const auto& window : windows) {
            if (window.width == area->width && window.height == area->height &&
                (!shownIn || window.title == title))
                shownIn = &window;
        }
    } else {
        // A page: it is in the largest window, the main one.
        shownIn = &*std::ranges::max_element(
            windows, {}, [](const ScreenWindow& window) { return window.width * window.height; });
    }
    if (!shownIn)
        throw std::runtime_error("No window of the screen is \"" + title + "\".");
    const Extents place = object.extents();
    return {shownIn->origin.x + place.x + place.width / 2,
            shownIn->origin.y + place.y + place.height / 2};
}

void User::click(const Wanted& wanted) const {
    desktop.tree.await(wanted);
    desktop.tree.awaitThat(wanted.description() + " can be clicked", [&] {
        const auto found = desktop.tree.find(wanted);
        return found && found->isSensitive();
    });
    const auto target = desktop.tree.find(wanted);
    if (!target)
        throw std::runtime_error(wanted.description() + " is gone.");
    desktop.screen.click(centreOnScreen(*target));
}

void User::typeInto(const Wanted& field, const std::string& text) const {
    click(field);
    desktop.tree.awaitThat(field.description() + " has the keyboard", [&] {
        const auto found = desktop.tree.find(field);
        return found && found->isFocused();
    });
    desktop.screen.type(text);
}

void User::press(const std::string& key) const {
    desktop.screen.press(key);
}

void User::awaitLoginPage() const {
    desktop.tree.await(pageField("Email"));
    desktop.tree.await(button("Sign in with passkey"));
}

void User::signInWithPassword(const std::string& email, const std::string& password) const {
    typeInto(pageField("Email"), email);
    typeInto(pageField("Password"), password);
    click(pageButton("Sign in"));
}

void User::awaitSignedIn(const std::string& firstName) const {
    desktop.tree.await(pageHeading("Welcome, " + firstName));
    desktop.tree.awaitGone(button("Sign in with passkey"));
}

void User::signOut() const {
    click(pageButton("Sign out"));
    awaitLoginPage();
}

void User::chooseRegister() const {
    click(menu("Account"));
    click(menuItem("Register a Passkey on This Mac…"));
}

void User::awaitPrompt() const {
    desktop.tree.await(label("Bevestig registratie"));
    desktop.tree.await(button("Registreer"));
}

void User::answerPrompt(const std::string& passwordOrCode) const {
    awaitPrompt();
    desktop.screen.type(passwordOrCode);
    click(button("Registreer"));
}

void User::pressSignInWithPasskey() const {
    click(button("Sign in with passkey"));
}

void User::awaitSheet() const {
    desktop.tree.await(button("Continue"));
}

void User::confirmSheet(const std::string& loginPassword) const {
    awaitSheet();
    click(button("Continue"));
    desktop.tree.await(label("Password: "));
    desktop.screen.type(loginPassword);
    desktop.screen.press("Return");
}

void User::cancelSheet() const {
    awaitSheet();
    desktop.screen.press("Escape");
}

void User::awaitAlert(const std::string& text) const {
    desktop.tree.await(label("Passkey"));
    desktop.tree.await(label(text));
}

void User::closeAlert() const {
    click(button("OK"));
    desktop.tree.awaitGone(label("Passkey"));
}

void User::acknowledge(const std::string& text) const {
    awaitAlert(text);
    closeAlert();
}

void User::awaitError(const std::string& text) const {
    desktop.tree.await(label(text));
}

} // namespace kelo::rig
