#pragma once

#include "platform/Application.h"

#include <gtkmm/window.h>

#include <memory>

namespace kelo::gtk {

/// A window as the system holds it. It does not keep the window alive: the window tells it when it
/// goes.
class WindowHandle final : public platform::Window {
public:
    explicit WindowHandle(Gtk::Window& window) : window(&window) {}
    /// With a window of its own, which stays out of sight.
    explicit WindowHandle(std::unique_ptr<Gtk::Window> window)
        : owned(std::move(window)), window(owned.get()) {}

    void forget() { window = nullptr; }

    /// Null when the window is gone, or when the anchor is none of this desktop's.
    static Gtk::Window* resolve(const std::shared_ptr<platform::Window>& anchor) {
        const auto* handle = dynamic_cast<const WindowHandle*>(anchor.get());
        return handle ? handle->window : nullptr;
    }

private:
    std::unique_ptr<Gtk::Window> owned;
    Gtk::Window* window;
};

} // namespace kelo::gtk
