#pragma once

#include "testing/rig/AccessibilityBus.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelo::rig {

/// Roles by the numbers of the accessibility protocol; only those that somebody asks for.
enum class Role : std::uint32_t {
    alert = 2,
    checkBox = 7,
    widget = 20, ///< of no particular kind
    label = 29,
    menu = 33,
    menuBar = 34,
    menuItem = 35,
    passwordText = 40,
    progressBar = 42,
    button = 43,
    radioButton = 44,
    text = 61,
    application = 75,
    entry = 79,
    heading = 83,
    document = 95,
    levelBar = 103,
};

/// In pixels of the window that shows the object, from its upper left corner.
struct Extents {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// One object of somebody's accessibility tree. It is asked anew every time: nothing is cached, and
/// an object that is gone answers with empty values. The bus must outlive it.
class Accessible {
public:
    Accessible(const AccessibilityBus& bus, ObjectAddress address);

    std::string name() const;
    Role role() const;
    Extents extents() const;
    std::vector<Accessible> children() const;
    /// The text of an entry or a label; for a masked entry what it shows.
    std::string text() const;

    /// Where something that measures stands, from its least to its most.
    double value() const;

    bool isSensitive() const;
    bool isFocused() const;
    /// It is drawn somewhere: visible, and not of size nothing.
    bool isShown() const;

    /// Gives it the keyboard.
    void focus() const;
    /// Performs its first action (a button's click); false when it has none.
    bool activate() const;

    const ObjectAddress& address() const { return object; }

private:
    bool hasState(unsigned number) const;

    const AccessibilityBus* bus;
    ObjectAddress object;
};

} // namespace kelo::rig
