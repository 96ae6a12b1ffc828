#pragma once

#include "testing/screen/XConnection.h"

namespace kelo::test {

/// Fills the screen with white in a window that the window manager does not manage: above all
/// earlier windows, below those that are raised later.
class Backdrop {
public:
    static constexpr unsigned color = 0xffffff;

    Backdrop();
    ~Backdrop();
    Backdrop(const Backdrop&) = delete;
    Backdrop& operator=(const Backdrop&) = delete;

    screen::WindowId window() const { return identifier; }

    /// Draws it again: mutter sometimes leaves out the first drawing of a new window.
    void redraw() const;

private:
    screen::XConnection own;
    screen::WindowId identifier = 0;
};

} // namespace kelo::test
