#pragma once

#include "testing/screen/XConnection.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace kelo::screen {

/// The X key symbol with this name ("Control_L", "Escape", "a"): the same number as GDK_KEY_….
using KeySymbol = unsigned long;

/// Throws std::runtime_error if there is no such name.
KeySymbol keySymbol(const std::string& name);

/// A keyboard that types through the X server (XTEST). Programs cannot tell it from a real one.
class Keyboard {
public:
    /// Throws std::runtime_error when the server lacks XTEST. The connection must outlive it.
    explicit Keyboard(const XConnection& connection);

    /// The number of the key that the layout has the symbol on; throws std::runtime_error when
    /// there is none.
    unsigned code(KeySymbol symbol) const;

    void down(KeySymbol symbol) const;
    void up(KeySymbol symbol) const;
    void down(const std::string& name) const { down(keySymbol(name)); }
    void up(const std::string& name) const { up(keySymbol(name)); }

    /// Presses and releases one key with the modifiers held.
    void press(KeySymbol symbol, const std::vector<KeySymbol>& modifiers = {}) const;
    /// All down in this order, and up again in the other.
    void tap(const std::vector<KeySymbol>& chord) const;
    /// A text of ASCII characters that the layout has, with Shift where it needs it.
    void type(const std::string& text) const;

private:
    void send(KeySymbol symbol, bool isDown) const;

    const XConnection& connection;
};

} // namespace kelo::screen
