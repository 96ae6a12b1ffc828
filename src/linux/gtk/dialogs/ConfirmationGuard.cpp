#include "linux/gtk/dialogs/ConfirmationGuard.h"

#include "linux/window/X11Toolkit.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/gestureclick.h>

#include <algorithm>
#include <array>
#include <utility>

namespace kelo::gtk {

namespace {

bool isEnter(guint key) {
    return key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter;
}

// Under X11 a key that went down in another window repeats in the window that gets the keyboard
// next, and its first repetition looks like a press. Wayland starts no repetition there.
std::set<guint> keysDown() {
    std::set<guint> down;
    GdkDisplay* const display = gdk_display_get_default();
    if (!window::isX11(display))
        return down;
    std::array<char, 32> bits{};
    XQueryKeymap(window::xlibDisplay(display), bits.data());
    for (guint code = 0; code < 8 * bits.size(); ++code)
        if (static_cast<unsigned char>(bits[code / 8]) >> code % 8 & 1)
            down.insert(code);
    return down;
}

} // namespace

ConfirmationGuard::ConfirmationGuard(Gtk::Window& window, SteadyNow now,
                                     std::function<bool()> refusesEnter)
    : window(window), now(std::move(now)), refusesEnter(std::move(refusesEnter)) {
    watchKeys();
    watchClicks();
    mapping = window.signal_map().connect([this] { restart(); });
    activity = window.property_is_active().signal_changed().connect([this] { activityChanged(); });
}

ConfirmationGuard::~ConfirmationGuard() {
    mapping.disconnect();
    activity.disconnect();
    window.remove_controller(keys);
    window.remove_controller(clicks);
}

void ConfirmationGuard::restart() {
    shown = now();
}

void ConfirmationGuard::watchKeys() {
    auto controller = Gtk::EventControllerKey::create();
    // Before the entry and the buttons, which confirm at each repetition.
    controller->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    controller->signal_key_pressed().connect(
        [this](guint key, guint code, Gdk::ModifierType) { return takesKey(key, code); }, false);
    controller->signal_key_released().connect(
        [this](guint, guint code, Gdk::ModifierType) { held.erase(code); });
    window.add_controller(controller);
    keys = controller;
}

void ConfirmationGuard::watchClicks() {
    auto controller = Gtk::GestureClick::create();
    controller->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    controller->signal_pressed().connect(
        [this, gesture = controller.get()](int, double x, double y) {
            if (now() < shown + deadTime && isOnGuardedButton(x, y))
                gesture->set_state(Gtk::EventSequenceState::CLAIMED);
        });
    window.add_controller(controller);
    clicks = controller;
}

// Without the keyboard the window hears of no release.
void ConfirmationGuard::activityChanged() {
    held.clear();
    if (!window.is_active())
        return;
    held = keysDown();
    active = now();
}

bool ConfirmationGuard::takesKey(guint key, guint code) {
    const bool repeats = !held.insert(code).second;
    if (key == GDK_KEY_Escape)
        return repeats;
    // In an entry the space bar is a character.
    const bool pressesButton =
        key == GDK_KEY_space && dynamic_cast<Gtk::Button*>(window.get_focus());
    if (!isEnter(key) && !pressesButton)
        return false;
    // Another window may close under the hands of somebody who types in it, and this one then gets
    // the keyboard. A click is aimed, so it does not depend on that.
    const bool tooEarly = now() < std::max(shown, active) + deadTime;
    return repeats || tooEarly || (isEnter(key) && refusesEnter());
}

bool ConfirmationGuard::isOnGuardedButton(double x, double y) {
    auto* target = window.pick(x, y);
    const auto isHit = [target](Gtk::Widget* button) {
        return button && target && (target == button || target->is_ancestor(*button));
    };
    return isHit(window.get_default_widget()) || std::ranges::any_of(guarded, isHit);
}

} // namespace kelo::gtk
