#pragma once

#include "testing/screen/XConnection.h"

#include <cstdint>
#include <filesystem>
#include <memory>

struct _XImage;

namespace kelo::screen {

/// A picture of an area of the screen. Colors are 0xRRGGBB.
class Picture {
public:
    /// Of the whole screen. Throws std::runtime_error when the screen cannot be read.
    explicit Picture(const XConnection& connection);
    /// Of an area that lies on the screen. Throws std::runtime_error when it does not.
    Picture(const XConnection& connection, int x, int y, int width, int height);

    int width() const;
    int height() const;
    /// Counted from the picture's upper left corner; it must lie in the picture.
    std::uint32_t color(int x, int y) const;
    /// Whether the part of the area that lies in the picture has more than a single color.
    bool isDrawn(int x, int y, int width, int height) const;
    bool operator==(const Picture& other) const;

    /// Writes it as PNG; makes the folder. Throws std::runtime_error on failure.
    void save(const std::filesystem::path& file) const;

private:
    struct Destroyer {
        void operator()(_XImage* image) const;
    };
    std::unique_ptr<_XImage, Destroyer> image;
};

/// The color of one pixel of the screen; 0 outside of the screen.
std::uint32_t colorAt(const XConnection& connection, int x, int y);

} // namespace kelo::screen
