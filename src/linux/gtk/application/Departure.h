#pragma once

#include "base/async/Task.h"
#include "linux/window/OpenPages.h"

#include <functional>
#include <memory>
#include <vector>

namespace kelo::gtk {

/// How the program ends when its user wants it to, in whichever way: those who have a reason to
/// stay ask the user first, one after the other. Main thread only.
class Departure {
public:
    /// Whether the program may end, for all that this one knows.
    using Question = std::function<Task<bool>()>;
    /// What comes after the end.
    enum class Then { nothing, startAgain };

    /// leave is called when every question was answered with yes. Without questions, it is called
    /// at once.
    Departure(std::vector<Question> questions, std::function<void(Then then)> leave);
    ~Departure();
    Departure(const Departure&) = delete;
    Departure& operator=(const Departure&) = delete;

    /// While a question is open, it is brought to the front, and not asked again; the last request
    /// says what comes then.
    void request(Then then = Then::nothing);

private:
    struct State;

    static Task<void> ask(std::shared_ptr<State> state);

    std::shared_ptr<State> state;
};

/// The question of all these pages. stayed is called when one of them is to stay.
Departure::Question questionOf(std::shared_ptr<window::OpenPages> pages,
                               std::function<void()> stayed);

} // namespace kelo::gtk
