#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace kelo::app {

/// An object that is created once, on first use, and lives as long as the process. Copies refer to
/// the same object. Main thread only.
template <typename T>
class StateObject {
public:
    using Factory = std::function<std::shared_ptr<T>()>;

    explicit StateObject(Factory factory)
        : state(std::make_shared<State>(State{std::move(factory), nullptr})) {}

    const std::shared_ptr<T>& get() const {
        if (!state->object)
            state->object = std::exchange(state->factory, nullptr)();
        return state->object;
    }

private:
    struct State {
        Factory factory;
        std::shared_ptr<T> object;
    };
    std::shared_ptr<State> state;
};

} // namespace kelo::app
