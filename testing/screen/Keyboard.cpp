#include "testing/screen/Keyboard.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <stdexcept>

namespace kelo::screen {

KeySymbol keySymbol(const std::string& name) {
    const KeySym symbol = XStringToKeysym(name.c_str());
    if (symbol == NoSymbol)
        throw std::runtime_error("There is no key named " + name + ".");
    return symbol;
}

Keyboard::Keyboard(const XConnection& connection) : connection(connection) {
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    if (!XTestQueryExtension(connection.display(), &event, &error, &major, &minor))
        throw std::runtime_error("The X server has no XTEST extension.");
}

unsigned Keyboard::code(KeySymbol symbol) const {
    const KeyCode found = XKeysymToKeycode(connection.display(), symbol);
    if (found == 0)
        throw std::runtime_error("The keyboard has no key for keysym " + std::to_string(symbol) +
                                 ".");
    return found;
}

void Keyboard::send(KeySymbol symbol, bool isDown) const {
    XTestFakeKeyEvent(connection.display(), code(symbol), isDown ? True : False, CurrentTime);
}

void Keyboard::down(KeySymbol symbol) const {
    send(symbol, true);
    connection.flush();
}

void Keyboard::up(KeySymbol symbol) const {
    send(symbol, false);
    connection.flush();
}

void Keyboard::press(KeySymbol symbol, const std::vector<KeySymbol>& modifiers) const {
    std::vector<KeySymbol> chord = modifiers;
    chord.push_back(symbol);
    tap(chord);
}

void Keyboard::tap(const std::vector<KeySymbol>& chord) const {
    for (const KeySymbol symbol : chord)
        send(symbol, true);
    for (auto symbol = chord.rbegin(); symbol != chord.rend(); ++symbol)
        send(*symbol, false);
    connection.flush();
}

void Keyboard::type(const std::string& text) const {
    for (const unsigned char character : text) {
        // The keysyms of Latin-1 are its code points.
        if (character >= 0x80)
            throw std::runtime_error("The text has a character that is not ASCII.");
        const auto key = static_cast<KeyCode>(code(character));
        const bool shifted =
            XkbKeycodeToKeysym(connection.display(), key, 0, 0) != KeySymbol{character};
        if (shifted)
            tap({XK_Shift_L, character});
        else
            tap({character});
    }
}

} // namespace kelo::screen
