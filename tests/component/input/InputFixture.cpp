#include "component/input/InputFixture.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>
#include <gdk/x11/gdkx.h>

#include <chrono>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace kelo::tests {

namespace {

constexpr std::chrono::seconds deadline{20};

} // namespace

void PrintTo(const Seen& seen, std::ostream* out) {
    *out << (seen.global ? "global " : "local ") << std::hex << seen.flags << std::dec;
}

void until(const std::string& what, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    // What happens on the display is not always an event of ours, so look again now and then.
    const guint tick = g_timeout_add(
        5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        holds = condition();
    }
    g_source_remove(tick);
    if (!holds)
        throw std::runtime_error("never happened: " + what);
}

OwnWindow::OwnWindow(bool overrideRedirect) : window_(gtk_window_new()) {
    gtk_window_set_default_size(window(), 300, 200);
    gtk_window_set_title(window(), "ours");
    if (overrideRedirect) {
        gtk_widget_realize(window_);
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        XChangeWindowAttributes(gdk_x11_display_get_xdisplay(gdk_display_get_default()),
                                identifier(), CWOverrideRedirect, &attributes);
    }
    gtk_widget_set_visible(window_, TRUE);
    until("our window is shown", [this] {
        XWindowAttributes attributes;
        XGetWindowAttributes(gdk_x11_display_get_xdisplay(gdk_display_get_default()), identifier(),
                             &attributes);
        return attributes.map_state == IsViewable;
    });
}

OwnWindow::~OwnWindow() {
    gtk_window_destroy(window());
}

unsigned long OwnWindow::identifier() const {
    return gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(window_)));
}

InputFixture::InputFixture() {
    gtk_init();
}

InputFixture::~InputFixture() = default;

void InputFixture::watch() {
    const auto global = monitors.addGlobalMonitor(platform::event_mask::flagsChanged,
                                                  [this](const platform::Event& event) {
                                                      log.push_back({true, event.modifierFlags});
                                                  });
    const auto local = monitors.addLocalMonitor(platform::event_mask::flagsChanged,
                                                [this](const platform::EventPointer& event) {
                                                    log.push_back({false, event->modifierFlags});
                                                    return event;
                                                });
    ASSERT_TRUE(global);
    ASSERT_TRUE(local);
}

void InputFixture::focusOther() {
    keyboard.focusOther();
    until("another program has the keyboard",
          [this] { return keyboard.focused() == keyboard.otherWindow(); });
}

void InputFixture::focusOurs(const OwnWindow& window) {
    keyboard.focus(window.identifier());
    until("our window has the keyboard", [&] {
        GdkSurface* const focused =
            gdk_x11_surface_lookup_for_display(gdk_display_get_default(), keyboard.focused());
        return focused == gtk_native_get_surface(GTK_NATIVE(window.window())) && window.isActive();
    });
}

std::vector<Seen> InputFixture::seen() {
    // A key of no test's comes after all that was pressed.
    constexpr Flags fence = command;
    keyboard.tap(XK_Super_L);
    until("all that was pressed is seen", [this] {
        return log.size() >= 2 && log[log.size() - 2].flags & fence && !(log.back().flags & fence);
    });
    log.resize(log.size() - 2);
    return std::exchange(log, {});
}

std::vector<Seen> InputFixture::seenSoFar(std::size_t count) {
    until("so many changes are seen", [this, count] { return log.size() >= count; });
    return std::exchange(log, {});
}

} // namespace kelo::tests
