#pragma once

#include "base/Clock.h"

#include <gtkmm/button.h>
#include <gtkmm/window.h>

#include <chrono>
#include <functional>
#include <set>
#include <vector>

namespace kelo::gtk {

/// Lets a dialog be confirmed only by somebody who has seen it. Main thread only.
///
/// - A held key counts once, however often it repeats. This holds for Enter, Escape, and the space
///   bar on a button, also if the key went down in another window.
/// - For a short time after the dialog has appeared, these keys do nothing, nor do clicks on the
///   default button and on those that are named: they were meant for whatever was there before.
///   Escape works at once.
///
/// Assistive technology that presses a button by name is not held back.
class ConfirmationGuard {
public:
    /// Long enough that a double click or a word that is being typed has ended, and shorter than it
    /// takes to read a question.
    static constexpr std::chrono::milliseconds deadTime{400};

    /// The window must outlive the object. `refusesEnter` says whether Enter must not confirm what
    /// the window shows now.
    ConfirmationGuard(
        Gtk::Window& window, SteadyNow now,
        std::function<bool()> refusesEnter = [] { return false; });
    ConfirmationGuard(const ConfirmationGuard&) = delete;
    ConfirmationGuard& operator=(const ConfirmationGuard&) = delete;
    ~ConfirmationGuard();

    /// Holds clicks on this button back, too. It must be in the window.
    void guard(Gtk::Button& button) { guarded.push_back(&button); }

    /// The dead time begins anew: the window asks something else now.
    void restart();

private:
    using Time = std::chrono::steady_clock::time_point;

    void watchKeys();
    void watchClicks();
    void activityChanged();
    bool takesKey(guint key, guint code);
    bool isOnGuardedButton(double x, double y);

    Gtk::Window& window;
    SteadyNow now;
    std::function<bool()> refusesEnter;
    std::vector<Gtk::Widget*> guarded;
    std::set<guint> held; ///< hardware codes
    Time shown;           ///< when the window appeared with what it asks
    Time active;          ///< when it got the keyboard
    Glib::RefPtr<Gtk::EventController> keys;
    Glib::RefPtr<Gtk::EventController> clicks;
    sigc::connection mapping;
    sigc::connection activity;
};

} // namespace kelo::gtk
