#pragma once

#include "testing/rig/AccessibilityBus.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelo::rig {

/// Roles with their numbers in the accessibility protocol; only those that tests use.
enum class Role : std::uint32_t {
    alert = 2,
    checkBox = 7,
    checkMenuItem = 8,
    dialog = 16,
    widget = 20, ///< of no particular kind
    window = 23,
    label = 29,
    listItem = 32,
    menu = 33,
    menuBar = 34,
    menuItem = 35,
    panel = 39, ///< a group, to a toolkit as old as 4.8
    passwordText = 40,
    progressBar = 42,
    button = 43,
    radioButton = 44,
    statusBar = 54,
    text = 61,
    application = 75,
    entry = 79,
    heading = 83,
    link = 88,
    document = 95,
    group = 99,
    levelBar = 103,
};

/// In pixels of the window that shows the object, from its upper left corner.
struct Extents {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// One object of a program's accessibility tree. Nothing is cached: each call asks the program, and
/// an object that no longer exists has empty values. The bus must outlive it.
class Accessible {
public:
    Accessible(const AccessibilityBus& bus, ObjectAddress address);

    std::string name() const;
    Role role() const;
    Extents extents() const;
    std::vector<Accessible> children() const;
    /// The text of an entry or a label; for a password entry, the masked text.
    std::string text() const;

    /// The current value of a progress bar or a level bar, on the scale of its program.
    double value() const;

    bool isSensitive() const;
    bool isFocused() const;
    /// Whether it is visible and has a size.
    bool isShown() const;

    /// Focuses it.
    void focus() const;
    /// Performs its first action, for a button the click; false if it has no action.
    bool activate() const;

    const ObjectAddress& address() const { return object; }

private:
    bool hasState(unsigned number) const;

    const AccessibilityBus* bus;
    ObjectAddress object;
};

} // namespace kelo::rig
