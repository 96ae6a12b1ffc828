#include "linux/gtk/kit/Redrawing.h"

#include "base/async/MainLoop.h"

#include <utility>

namespace kelo::gtk {

Redrawing::Redrawing(const std::vector<std::shared_ptr<ObservableObject>>& observed,
                     std::function<void()> draw)
    : state(std::make_shared<State>(State{std::move(draw)})) {
    for (const auto& object : observed)
        observations.push_back(object->observe([weak = std::weak_ptr(state)] { schedule(weak); }));
}

void Redrawing::schedule(const std::weak_ptr<State>& weak) {
    const auto state = weak.lock();
    if (!state || std::exchange(state->due, true))
        return;
    MainLoop::main().post([weak] {
        const auto state = weak.lock();
        if (!state)
            return;
        state->due = false;
        state->draw();
    });
}

} // namespace kelo::gtk
