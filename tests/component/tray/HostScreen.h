#pragma once

#include "testing/screen/Picture.h"
#include "testing/screen/Pointer.h"
#include "testing/screen/Windows.h"
#include "testing/screen/XConnection.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::tests {

struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    screen::Point middle() const { return {x + width / 2, y + height / 2}; }
    friend bool operator==(const Area&, const Area&) = default;
};

/// A screen with a tray on it. Tests look at its pixels and click with its mouse.
class HostScreen {
public:
    /// Throws after a generous deadline.
    void until(const std::string& what, const std::function<bool()>& condition) const;
    /// Returns when the screen has not changed for a moment.
    screen::Picture still() const;
    /// The area in which the screen differs from an earlier picture; empty if there is none.
    std::optional<Area> changed(const screen::Picture& before) const;

    /// The menu that has come up; waits for it, and until it is drawn.
    Area menu() const;
    bool hasMenu() const;
    /// The lines of text in it, from above.
    std::vector<Area> lines(const Area& menu) const;

    bool hasWindow(const std::string& title) const;
    void close(const std::string& title) const;

    void save(const std::filesystem::path& file) const { screen::Picture(connection).save(file); }
    /// Enlarged, so that an icon can be judged.
    void save(const Area& area, const std::filesystem::path& file) const;

    const screen::XConnection connection;
    const screen::Windows windows{connection};
    const screen::Pointer pointer{connection};

private:
    std::optional<Area> menuWindow() const;
};

} // namespace kelo::tests
