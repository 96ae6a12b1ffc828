#include "testing/screen/Picture.h"

#include <cairo.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace kelo::screen {

namespace {

struct SurfaceDestroyer {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePointer = std::unique_ptr<cairo_surface_t, SurfaceDestroyer>;

} // namespace

void Picture::Destroyer::operator()(_XImage* owned) const {
    XDestroyImage(owned);
}

Picture::Picture(const XConnection& connection)
    : Picture(connection, 0, 0, connection.width(), connection.height()) {}

Picture::Picture(const XConnection& connection, int x, int y, int width, int height)
    : image(XGetImage(connection.display(), connection.root(), x, y, static_cast<unsigned>(width),
                      static_cast<unsigned>(height), AllPlanes, ZPixmap)) {
    if (!image)
        throw std::runtime_error("The screen cannot be read.");
}

int Picture::width() const {
    return image->width;
}

int Picture::height() const {
    return image->height;
}

std::uint32_t Picture::color(int x, int y) const {
    return static_cast<std::uint32_t>(XGetPixel(image.get(), x, y) & 0xFFFFFF);
}

bool Picture::isDrawn(int x, int y, int width, int height) const {
    const int left = std::max(x, 0);
    const int top = std::max(y, 0);
    const int right = std::min(x + width, this->width());
    const int bottom = std::min(y + height, this->height());
    for (int row = top; row < bottom; ++row) {
        for (int column = left; column < right; ++column) {
            if (color(column, row) != color(left, top))
                return true;
        }
    }
    return false;
}

bool Picture::operator==(const Picture& other) const {
    if (width() != other.width() || height() != other.height() ||
        image->bytes_per_line != other.image->bytes_per_line)
        return false;
    const auto size =
        static_cast<std::size_t>(image->bytes_per_line) * static_cast<std::size_t>(height());
    return std::memcmp(image->data, other.image->data, size) == 0;
}

void Picture::save(const std::filesystem::path& file) const {
    const SurfacePointer surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width(), height()));
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const auto rowLength = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    for (int y = 0; data && y < height(); ++y) {
        unsigned char* row = data + static_cast<std::size_t>(y) * rowLength;
        for (int x = 0; x < width(); ++x) {
            const std::uint32_t pixel = color(x, y);
            std::memcpy(row + static_cast<std::size_t>(x) * sizeof pixel, &pixel, sizeof pixel);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    if (file.has_parent_path())
        std::filesystem::create_directories(file.parent_path());
    const cairo_status_t status = cairo_surface_write_to_png(surface.get(), file.c_str());
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error("The picture of the screen cannot be written to " + file.string() +
                                 ": " + cairo_status_to_string(status));
}

std::uint32_t colorAt(const XConnection& connection, int x, int y) {
    if (x < 0 || y < 0 || x >= connection.width() || y >= connection.height())
        return 0;
    return Picture(connection, x, y, 1, 1).color(0, 0);
}

} // namespace kelo::screen
