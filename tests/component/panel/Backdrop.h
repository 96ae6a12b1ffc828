#pragma once

#include "screen/XConnection.h"

namespace kelo::test {

/// Fills the screen with white, without a word to the window manager. It lies above what was there
/// before it and below what is raised after it.
class Backdrop {
public:
    static constexpr unsigned color = 0xffffff;

    Backdrop();
    ~Backdrop();
    Backdrop(const Backdrop&) = delete;
    Backdrop& operator=(const Backdrop&) = delete;

    screen::WindowId window() const { return identifier; }

private:
    screen::XConnection own;
    screen::WindowId identifier = 0;
};

} // namespace kelo::test
