#pragma once

#include "testing/screen/Keyboard.h"
#include "testing/screen/Picture.h"
#include "testing/screen/Pointer.h"
#include "testing/screen/Windows.h"
#include "testing/screen/XConnection.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::rig {

using screen::Point;
using screen::ScreenWindow;
using screen::WindowId;

/// A rectangle of the screen, in pixels from its upper left corner.
struct Area {
    Point corner;
    int width = 0;
    int height = 0;

    Point middle() const { return {corner.x + width / 2, corner.y + height / 2}; }
    friend bool operator==(const Area&, const Area&) = default;
};

/// The X screen of this desktop: its windows, its keyboard and mouse, and pictures of it.
class Screen {
public:
    /// Throws std::runtime_error when DISPLAY cannot be opened or lacks XTEST.
    Screen();

    /// Whether the area shows more than a single color.
    bool isDrawn(const Area& area) const;

    /// Presses and releases one key by its name ("Return", "Escape", "F10"), with the modifiers
    /// ("Control_L") held.
    void press(const std::string& key, const std::vector<std::string>& modifiers = {}) const;

    /// Writes the whole screen as PNG, once it has stood still for a moment (the tree is ahead of
    /// what is drawn) or a little later; makes the folder. Throws std::runtime_error on failure.
    void capture(const std::filesystem::path& file) const;

    const screen::XConnection connection;
    const screen::Windows windows{connection};
    const screen::Keyboard keyboard{connection};
    const screen::Pointer pointer{connection};
};

} // namespace kelo::rig
