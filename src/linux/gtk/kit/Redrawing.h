#pragma once

#include "base/ObservableObject.h"

#include <functional>
#include <memory>
#include <vector>

namespace kelo::gtk {

/// Calls draw after any of the observed objects changed. Objects notify before they change, and
/// often several times in a row, so draw runs once, in a later turn of the main loop. After
/// destruction draw is not called any more. Main thread only.
class Redrawing {
public:
    Redrawing(const std::vector<std::shared_ptr<ObservableObject>>& observed,
              std::function<void()> draw);

private:
    struct State {
        std::function<void()> draw;
        bool due = false;
    };
    static void schedule(const std::weak_ptr<State>& weak);

    std::shared_ptr<State> state;
    std::vector<Observation> observations;
};

} // namespace kelo::gtk
