#pragma once

#include "base/Clock.h"
#include "linux/gtk/kit/ModalWindow.h"

#include <chrono>
#include <optional>
#include <utility>

namespace kelo::gtk {

/// Whether a dialog that a page has caused may take the keyboard: somebody may be typing in another
/// program. Main thread only.
class KeyboardTurn {
public:
    explicit KeyboardTurn(SteadyNow now) : now(std::move(now)) {}

    const SteadyNow& clock() const { return now; }
    /// The user has answered a dialog. The page's window does not have the keyboard back at once.
    void answered() { lastAnswer = now(); }
    /// parent: of the dialog, which is not shown yet; may be null.
    bool isOurs(const Gtk::Window* parent) const {
        const auto* const other = ModalWindow::topmost();
        return !parent || parent->is_active() || (other && other->is_active()) ||
               (lastAnswer && now() < *lastAnswer + turnOfTheManager);
    }

private:
    /// As long as a window manager may need to give the keyboard back.
    static constexpr std::chrono::seconds turnOfTheManager{1};

    SteadyNow now;
    std::optional<std::chrono::steady_clock::time_point> lastAnswer;
};

} // namespace kelo::gtk
