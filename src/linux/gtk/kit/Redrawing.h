#pragma once

#include "base/ObservableObject.h"

#include <functional>
#include <memory>
#include <vector>

namespace kelo::gtk {

/// Draws something again after any of the objects it shows has changed. Objects tell before they
/// change, and often several times in a row, so the drawing comes once, in a later turn of the main
/// loop. Nothing is drawn any more when this is gone.
class Redrawing {
public:
    Redrawing(const std::vector<std::shared_ptr<ObservableObject>>& observed,
              std::function<void()> draw);

private:
    struct State {
        std::function<void()> draw;
        bool due = false;
    };
    static void order(const std::weak_ptr<State>& weak);

    std::shared_ptr<State> state;
    std::vector<Observation> observations;
};

} // namespace kelo::gtk
