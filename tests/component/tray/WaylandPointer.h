#pragma once

#include <cstdint>
#include <memory>

struct wl_display;
struct wl_proxy;

namespace kelo::tests {

/// A virtual mouse for a Wayland compositor without a real one, plugged in until it is destroyed.
/// Needs a compositor with zwlr_virtual_pointer_manager_v1. Every function returns after the
/// compositor has processed the request, and throws std::runtime_error if the compositor refused it
/// or exited.
class WaylandPointer {
public:
    /// `width` and `height` are those of the only screen, in the pixels that moveTo() counts.
    WaylandPointer(std::uint32_t width, std::uint32_t height);

    void moveTo(std::uint32_t x, std::uint32_t y);
    /// Down and up again where the pointer is; `button` is one of <linux/input-event-codes.h>.
    void click(std::uint32_t button);

private:
    struct Disconnect {
        void operator()(wl_display* display) const noexcept;
    };
    struct Destroy {
        void operator()(wl_proxy* proxy) const noexcept;
    };

    void turn(std::uint32_t button, bool isDown);
    void frame();
    void settle();

    std::uint32_t width;
    std::uint32_t height;
    std::unique_ptr<wl_display, Disconnect> display;
    std::unique_ptr<wl_proxy, Destroy> pointer;
};

} // namespace kelo::tests
