#pragma once

#include "testing/screen/XConnection.h"

#include <string>
#include <utility>
#include <vector>

namespace kelo::test {

/// Sets the properties that a window manager would set, on a desktop without one. So a test can
/// play any kind of manager, and none interferes. The destructor removes them.
class AnnouncedDesktop {
public:
    using Numbers = std::vector<unsigned long>;

    /// For focus(): the window under the pointer gets the keys.
    static constexpr screen::WindowId followsPointer = 1;

    AnnouncedDesktop() = default;
    ~AnnouncedDesktop();
    AnnouncedDesktop(const AnnouncedDesktop&) = delete;
    AnnouncedDesktop& operator=(const AnnouncedDesktop&) = delete;

    // Properties of the root window, by their names.
    void numbers(const std::string& property, const Numbers& values);
    void windows(const std::string& property, const Numbers& identifiers);
    /// Of another window; they go with it.
    void numbersOf(screen::WindowId window, const std::string& property, const Numbers& values);
    void typeOf(screen::WindowId window, const std::string& type);

    void focus(screen::WindowId window);
    /// A window inside another, shown; it goes with this object.
    screen::WindowId addChild(screen::WindowId parent, int width, int height);

private:
    void set(screen::WindowId window, const std::string& property, unsigned long type,
             const Numbers& values);

    screen::XConnection own;
    std::vector<std::pair<screen::WindowId, std::string>> announced;
};

} // namespace kelo::test
