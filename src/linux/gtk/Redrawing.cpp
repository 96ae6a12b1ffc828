#include "linux/gtk/Redrawing.h"

#include "platform/MainLoop.h"

#include <utility>

namespace kelo::desktop {

Redrawing::Redrawing(const std::vector<std::shared_ptr<platform::ObservableObject>>& observed,
                     std::function<void()> draw)
    : state(std::make_shared<State>(State{std::move(draw)})) {
    for (const auto& object : observed)
        observations.push_back(object->observe([weak = std::weak_ptr(state)] { order(weak); }));
}

void Redrawing::order(const std::weak_ptr<State>& weak) {
    const auto state = weak.lock();
    if (!state || std::exchange(state->due, true))
        return;
    platform::MainLoop::main().post([weak] {
        const auto state = weak.lock();
        if (!state)
            return;
        state->due = false;
        state->draw();
    });
}

} // namespace kelo::desktop
