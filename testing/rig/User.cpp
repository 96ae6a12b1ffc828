#include "testing/rig/User.h"

#include "testing/rig/PlaceInWindow.h"

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
/// two meet by the window's title and size.
std::optional<ScreenWindow> User::windowOnScreen(const Accessible& window) const {
    const Extents area = window.extents();
    const std::string title = window.name();
    std::optional<ScreenWindow> nearest;
    const auto difference = [&](const ScreenWindow& shown) {
        return std::abs(shown.width - area.width) + std::abs(shown.height - area.height);
    };
    for (const auto& shown : desktop.screen.windows.managed()) {
        if (shown.title == title && (!nearest || difference(shown) < difference(*nearest)))
            nearest = shown;
    }
    return nearest;
}

std::optional<Area> User::placeOnScreen(const Accessible& object, WindowId pageHolder) const {
    if (pageHolder != 0) {
        const Extents place = object.extents();
        const Point corner = desktop.screen.windows.describe(pageHolder).origin;
        return Area{{corner.x + place.x, corner.y + place.y}, place.width, place.height};
    }
    auto holder = windowHolding(desktop.bus, object);
    if (!holder)
        holder = desktop.tree.mainWindow(); // a page that no window's tree leads to
    const auto window = holder ? windowOnScreen(*holder) : std::nullopt;
    if (!window)
        return std::nullopt;
    const Extents place =
        object.address().inPage ? object.extents() : placeInWindow(desktop.bus, *holder, object);
    // The server's window has a margin around, where a program draws its frame by itself. Newer
    // toolkits count from inside that frame, so that the window itself begins to the left of 0.
    const Extents area = holder->extents();
    return Area{{window->origin.x + (window->width - area.width) / 2 - area.x + place.x,
                 window->origin.y + (window->height - area.height) / 2 - area.y + place.y},
                place.width,
                place.height};
}

Area User::awaitDrawn(const Wanted& wanted, WindowId pageHolder) const {
    const auto look = [&]() -> std::optional<Area> {
        const auto found = desktop.tree.find(wanted);
        const auto place = found ? placeOnScreen(*found, pageHolder) : std::nullopt;
        return place && desktop.screen.isDrawn(*place) ? place : std::nullopt;
    };
    return desktop.tree.awaitRest(wanted.description() + " is drawn and at rest", look);
}

void User::click(const Wanted& wanted, WindowId pageHolder) const {
    desktop.tree.awaitThat(wanted.description() + " can be clicked", [&] {
        const auto found = desktop.tree.find(wanted);
        return found && found->isSensitive();
    });
    desktop.screen.pointer.click(awaitDrawn(wanted, pageHolder).middle());
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
    click(menu(menuName));
    desktop.tree.await(menuItem(itemName));
    // The first item has the keyboard when the menu has opened; the others are further down.
    desktop.tree.awaitThat("the menu " + menuName + " has the keyboard",
                           [&] { return focusedItem().has_value(); });
    chooseFromOpenMenu(itemName);
}

void User::chooseFromOpenMenu(const std::string& itemName) const {
    desktop.tree.await(menuItem(itemName));
    auto focused = focusedItem();
    while (!focused || focused->name() != itemName) {
        desktop.screen.press("Down");
        desktop.tree.awaitThat("the next item of the menu has the keyboard", [&] {
            const auto next = focusedItem();
            if (!next || (focused && next->address() == focused->address()))
                return false;
            focused = next;
            return true;
        });
    }
    desktop.screen.press("Return");
}

std::optional<Accessible> User::focusedItem() const {
    auto found = desktop.tree.findFocused(Role::menuItem);
    return found ? found : desktop.tree.findFocused(Role::checkMenuItem);
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
    awaitKeyboardInPasswordField();
}

/// The toolkit says which field has the keyboard in its own window; the window manager, which
/// window has it.
void User::awaitKeyboardInPasswordField() const {
    desktop.tree.awaitThat("a password field has the keyboard", [&] {
        const auto field = desktop.tree.findFocused(Role::passwordText);
        const auto holder = field ? windowHolding(desktop.bus, *field) : std::nullopt;
        const auto active = desktop.screen.windows.active();
        return holder && active && active->title == holder->name();
    });
}

void User::answerPrompt(const std::string& passwordOrCode) const {
    awaitPrompt();
    desktop.screen.keyboard.type(passwordOrCode);
    insist(
        "the prompt is answered", [&] { click(button("Registreer")); },
        [&] { return !desktop.tree.find(button("Registreer")); });
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

void User::pressContinue() const {
    awaitSheet();
    insist(
        "the sheet is agreed to", [&] { click(button("Continue")); },
        [&] {
            const auto found = desktop.tree.find(button("Continue"));
            return !found || !found->isSensitive() || desktop.tree.find(label(passwordQuestion));
        });
}

void User::agreeOnSheet() const {
    pressContinue();
    desktop.tree.await(label(passwordQuestion));
}

void User::answerSheet(const std::string& loginPassword) const {
    desktop.tree.await(label(passwordQuestion));
    awaitKeyboardInPasswordField();
    desktop.screen.keyboard.type(loginPassword);
    // The next question, if there is one, has a field of its own.
    const auto field = desktop.tree.findFocused(Role::passwordText);
    insist(
        "the password is taken", [&] { desktop.screen.press("Return"); },
        [&] {
            const auto current = desktop.tree.findFocused(Role::passwordText);
            return !current || !field || current->address() != field->address();
        });
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
    insist(
        "the alert is closed", [&] { click(button("OK")); },
        [&] { return !desktop.tree.find(label("Passkey")); });
}

void User::answerAlert(const std::string& buttonName) const {
    const Wanted wanted = button(buttonName);
    desktop.tree.await(wanted);
    insist(
        "the alert is answered",
        [&] {
            if (desktop.tree.find(wanted))
                click(wanted);
        },
        [&] { return !desktop.tree.find(wanted); });
}

void User::clickUntil(const std::string& effect, const Wanted& wanted,
                      const std::function<bool()>& hasHadEffect) const {
    insist(
        effect,
        [&] {
            if (!hasHadEffect())
                click(wanted);
        },
        hasHadEffect);
}

void User::insist(const std::string& effect, const std::function<void()>& action,
                  const std::function<bool()>& hasHadEffect) const {
    constexpr std::chrono::seconds patience{1};
    for (auto waited = 0 * patience; waited < deadline; waited += patience) {
        action();
        if (desktop.bus.await(hasHadEffect, patience))
            return;
    }
    throw std::runtime_error("Tried in vain until " + effect + ".");
}

void User::awaitError(const std::string& text) const {
    desktop.tree.await(alert(text));
}

} // namespace kelo::rig
