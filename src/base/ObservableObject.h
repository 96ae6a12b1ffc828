#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace kelo {

/// A subscription; destroying it unsubscribes. May outlive the observed object.
class Observation {
public:
    Observation() = default;
    explicit Observation(std::function<void()> end) : end(std::move(end)) {}
    Observation(Observation&& other) noexcept : end(std::exchange(other.end, nullptr)) {}
    Observation& operator=(Observation&& other) noexcept {
        std::swap(end, other.end);
        return *this;
    }
    ~Observation() {
        if (end)
            end();
    }

private:
    std::function<void()> end;
};

/// An object whose published fields are read by views. Observers are notified before each change,
/// even if the new value equals the old one. To see the new value, read the field in a later turn
/// of the main loop. Main thread only.
class ObservableObject {
public:
    ObservableObject() = default;
    virtual ~ObservableObject() = default;
    ObservableObject(const ObservableObject&) = delete;
    ObservableObject& operator=(const ObservableObject&) = delete;

    [[nodiscard]] Observation observe(std::function<void()> willChange) {
        const std::uint64_t number = observers->next++;
        observers->actions.emplace(number,
                                   std::make_shared<std::function<void()>>(std::move(willChange)));
        return Observation([weak = std::weak_ptr(observers), number] {
            if (const auto list = weak.lock())
                list->actions.erase(number);
        });
    }

    void objectWillChange() {
        // A callback may subscribe or unsubscribe, so iterate by number, not by iterator.
        const auto list = observers;
        for (auto next = list->actions.begin(); next != list->actions.end();) {
            const std::uint64_t number = next->first;
            const auto action = next->second;
            (*action)();
            next = list->actions.upper_bound(number);
        }
    }

private:
    struct Observers {
        std::map<std::uint64_t, std::shared_ptr<std::function<void()>>> actions;
        std::uint64_t next = 0;
    };
    std::shared_ptr<Observers> observers = std::make_shared<Observers>();
};

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
