#pragma once

#include "platform/Application.h"

#include <gtkmm/applicationwindow.h>

#include <functional>
#include <memory>

namespace kelo::gtk {

/// The handle of a window for the rest of the system. It does not keep the window alive; the window
/// calls forget() when it is destroyed.
class WindowHandle final : public platform::Window {
public:
    explicit WindowHandle(Gtk::Window& window) : window(&window) {}
    /// Owns the window, which stays invisible.
    explicit WindowHandle(std::unique_ptr<Gtk::Window> window)
        : owned(std::move(window)), window(owned.get()) {}

    void forget() { window = nullptr; }

    /// Null if the window was destroyed, or if the anchor is null or not a handle of this desktop.
    static Gtk::Window* resolve(const std::shared_ptr<platform::Window>& anchor) {
        const auto* handle = dynamic_cast<const WindowHandle*>(anchor.get());
        return handle ? handle->window : nullptr;
    }

private:
    std::unique_ptr<Gtk::Window> owned;
    Gtk::Window* window;
};

/// A window of the program that is not a dialog. When the user closes it, it disappears from the
/// screen, and its owner destroys it later, outside of the window's own event handling.
class ProgramWindow : public Gtk::ApplicationWindow {
public:
    /// closed is called once, when the user closes the window. The owner must destroy the window in
    /// a later turn of the main loop.
    explicit ProgramWindow(std::function<void()> closed);
    ~ProgramWindow() override;

    const std::shared_ptr<WindowHandle>& handle() const { return handle_; }

protected:
    /// Called when the user closes the window, while it is still on the screen.
    virtual void closing() {}

private:
    std::shared_ptr<WindowHandle> handle_ = std::make_shared<WindowHandle>(*this);
    std::function<void()> closed;
};

} // namespace kelo::gtk
