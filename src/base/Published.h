#pragma once

#include "base/ObservableObject.h"

#include <utility>

namespace kelo {

/// A field of an ObservableObject. Each assignment notifies the object's observers first.
template <typename T>
class Published {
public:
    Published(ObservableObject& owner, T initial) : owner(owner), value(std::move(initial)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    Published& operator=(T next) {
        owner.objectWillChange();
        value = std::move(next);
        return *this;
    }

    const T& get() const { return value; }
    operator const T&() const { return value; }

private:
    ObservableObject& owner;
    T value;
};

} // namespace kelo
