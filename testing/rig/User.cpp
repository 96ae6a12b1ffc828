#include "testing/rig/User.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

namespace kelo::rig {

namespace {

constexpr const char* passwordQuestion = "Password: ";

/// Of UTF-8; a masked field shows another character for each, but as many.
std::ptrdiff_t lengthInCharacters(const std::string& text) {
    return std::ranges::count_if(text, [](char byte) { return (byte & 0xC0) != 0x80; });
}

std::optional<Accessible> parentOf(const AccessibilityBus& bus, const Accessible& object) {
    const VariantPointer parent =
        bus.property(object.address(), "org.a11y.atspi.Accessible", "Parent");
    if (!parent || !g_variant_is_of_type(parent.get(), G_VARIANT_TYPE("(so)")))
        return std::nullopt;
    const char* busName = nullptr;
    const char* path = nullptr;
    g_variant_get(parent.get(), "(&s&o)", &busName, &path);
    if (!*busName)
        return std::nullopt;
    return Accessible(bus, {busName, path});
}

/// The window that holds the object: the one right below its program's root. A page has none.
std::optional<Accessible> windowHolding(const AccessibilityBus& bus, Accessible object) {
    while (const auto parent = parentOf(bus, object)) {
        if (parent->role() == Role::application)
            return object;
        object = *parent;
    }
    return std::nullopt;
}

} // namespace

User::User(const PrivateDesktop& desktop) : desktop(desktop) {}

/// The accessibility tree knows places in a window, and the X server where the windows stand. The
/// two meet by the window's title and size; the server's has a margin around, where a program draws
/// its frame by itself.
Point User::cornerOnScreen(const Accessible& object) const {
    auto holder = windowHolding(desktop.bus, object);
    if (!holder)
        holder = desktop.tree.mainWindow(); // a page
    if (!holder)
        throw std::runtime_error("No window is on the screen.");
    const Extents area = holder->extents();
    const std::string title = holder->name();
    std::optional<ScreenWindow> shownIn;
    const auto difference = [&](const ScreenWindow& window) {
        return std::abs(window.width - area.width) + std::abs(window.height - area.height);
    };
    for (const auto& window : desktop.screen.windows.managed()) {
        if (window.title == title && (!shownIn || difference(window) < difference(*shownIn)))
            shownIn = window;
    }
    if (!shownIn)
        throw std::runtime_error("No window of the screen shows \"" + object.name() +
                                 "\". The windows are:\n" +
                                 screen::Windows::picture(desktop.screen.windows.managed()) +
                                 "The accessible objects are:\n" + desktop.tree.picture());
    const Extents place = object.extents();
    return {shownIn->origin.x + (shownIn->width - area.width) / 2 + place.x,
            shownIn->origin.y + (shownIn->height - area.height) / 2 + place.y};
}

void User::awaitDrawn(const Wanted& wanted) const {
    desktop.tree.await(wanted);
    desktop.tree.awaitThat(wanted.description() + " is drawn", [&] {
        const auto found = desktop.tree.find(wanted);
        if (!found)
            return false;
        const Extents place = found->extents();
        return desktop.screen.isDrawn(cornerOnScreen(*found), place.width, place.height);
    });
}

void User::click(const Wanted& wanted) const {
    awaitDrawn(wanted);
    desktop.tree.awaitThat(wanted.description() + " can be clicked", [&] {
        const auto found = desktop.tree.find(wanted);
        return found && found->isSensitive();
    });
    const auto target = desktop.tree.find(wanted);
    if (!target)
        throw std::runtime_error(wanted.description() + " is gone.");
    const Extents place = target->extents();
    const Point corner = cornerOnScreen(*target);
    desktop.screen.pointer.click({corner.x + place.width / 2, corner.y + place.height / 2});
}

void User::typeInto(const Wanted& field, const std::string& text) const {
    click(field);
    desktop.tree.awaitThat(field.description() + " has the keyboard", [&] {
        const auto found = desktop.tree.find(field);
        return found && found->isFocused();
    });
    desktop.screen.keyboard.type(text);
    // The web engine hands on keys one by one and clicks at once: the next click, made with a
    // machine's haste, would overtake them.
    desktop.tree.awaitThat("the text stands in " + field.description(), [&] {
        const auto found = desktop.tree.find(field);
        return found && lengthInCharacters(found->text()) == lengthInCharacters(text);
    });
}

void User::press(const std::string& key) const {
    desktop.screen.press(key);
}

void User::chooseFromMenu(const std::string& menuName, const std::string& itemName) const {
    const Wanted item = menuItem(itemName);
    click(menu(menuName));
    desktop.tree.await(item);
    // The first item has the keyboard when the menu has opened; the others are further down.
    desktop.tree.awaitThat("the menu " + menuName + " has the keyboard",
                           [&] { return desktop.tree.findFocused(Role::menuItem).has_value(); });
    while (true) {
        const auto focused = desktop.tree.findFocused(Role::menuItem);
        if (!focused)
            throw std::runtime_error("The menu " + menuName + " lost the keyboard.");
        if (focused->name() == itemName)
            break;
        desktop.screen.press("Down");
        desktop.tree.awaitThat("the next item of the menu has the keyboard", [&] {
            const auto next = desktop.tree.findFocused(Role::menuItem);
            return next && next->address() != focused->address();
        });
    }
    desktop.screen.press("Return");
}

void User::awaitLoginPage() const {
    awaitDrawn(pageField("Email"));
    awaitDrawn(button("Sign in with passkey"));
}

void User::signInWithPassword(const std::string& email, const std::string& password) const {
    typeInto(pageField("Email"), email);
    typeInto(pageField("Password"), password);
    click(pageButton("Sign in"));
}

void User::awaitSignedIn(const std::string& firstName) const {
    awaitDrawn(pageHeading("Welcome, " + firstName));
    desktop.tree.awaitGone(button("Sign in with passkey"));
}

void User::signOut() const {
    click(pageButton("Sign out"));
    awaitLoginPage();
}

void User::chooseRegister() const {
    chooseFromMenu("Account", "Register a Passkey on This Mac…");
}

void User::awaitPrompt() const {
    desktop.tree.await(label("Bevestig registratie"));
    desktop.tree.await(button("Registreer"));
}

void User::answerPrompt(const std::string& passwordOrCode) const {
    awaitPrompt();
    desktop.screen.keyboard.type(passwordOrCode);
    click(button("Registreer"));
}

void User::pressSignInWithPasskey() const {
    click(button("Sign in with passkey"));
}

void User::awaitSheet() const {
    desktop.tree.await(button("Continue"));
    desktop.tree.awaitThat("the sheet has the keyboard", [&] {
        const auto active = desktop.screen.windows.active();
        return active && active->title.ends_with("passkey?");
    });
}

void User::agreeOnSheet() const {
    awaitSheet();
    click(button("Continue"));
    desktop.tree.await(label(passwordQuestion));
}

void User::answerSheet(const std::string& loginPassword) const {
    desktop.tree.await(label(passwordQuestion));
    desktop.screen.keyboard.type(loginPassword);
    desktop.screen.press("Return");
}

void User::confirmSheet(const std::string& loginPassword) const {
    agreeOnSheet();
    answerSheet(loginPassword);
}

void User::cancelSheet() const {
    awaitSheet();
    desktop.screen.press("Escape");
    desktop.tree.awaitGone(button("Continue"));
}

void User::awaitAlert(const std::string& text) const {
    desktop.tree.await(label("Passkey"));
    desktop.tree.await(label(text));
}

void User::closeAlert() const {
    click(button("OK"));
    desktop.tree.awaitGone(label("Passkey"));
}

void User::awaitError(const std::string& text) const {
    desktop.tree.await(alert(text));
}

} // namespace kelo::rig
