#include "linux/gtk/application/Departure.h"

#include "base/async/Continuation.h"
#include "base/async/Spawn.h"
#include "linux/gtk/kit/ModalWindow.h"

#include <utility>

namespace kelo::gtk {

struct Departure::State {
    std::vector<Question> questions;
    std::function<void(Then)> leave; ///< empty once the departure is gone
    bool isAsking = false;           ///< or about to
    Then then = Then::nothing;
};

namespace {

/// The flow may be dropped while a question is open.
class Asking {
public:
    explicit Asking(bool& flag) : flag(flag) {}
    ~Asking() { flag = false; }
    Asking(const Asking&) = delete;
    Asking& operator=(const Asking&) = delete;

private:
    bool& flag;
};

} // namespace

Departure::Departure(std::vector<Question> questions, std::function<void(Then)> leave)
    : state(std::make_shared<State>(State{std::move(questions), std::move(leave)})) {}

Departure::~Departure() {
    state->leave = nullptr;
}

void Departure::request(Then then) {
    state->then = then;
    if (state->questions.empty()) {
        state->leave(then);
        return;
    }
    if (std::exchange(state->isAsking, true)) {
        if (auto* const question = ModalWindow::topmost())
            question->present();
        return;
    }
    spawn(ask(state));
}

namespace {

Task<bool> askPages(std::shared_ptr<window::OpenPages> pages, std::function<void()> stayed) {
    const bool leave = co_await withCheckedContinuation<bool>([&pages](auto continuation) {
        pages->leaveAll([continuation](bool leave) { continuation.resume(leave); });
    });
    if (!leave)
        stayed();
    co_return leave;
}

} // namespace

Departure::Question questionOf(std::shared_ptr<window::OpenPages> pages,
                               std::function<void()> stayed) {
    return
        [pages = std::move(pages), stayed = std::move(stayed)] { return askPages(pages, stayed); };
}

Task<void> Departure::ask(std::shared_ptr<State> state) {
    const Asking asking(state->isAsking);
    bool mayLeave = true;
    for (std::size_t at = 0; mayLeave && at < state->questions.size(); ++at)
        mayLeave = co_await state->questions[at]();
    if (mayLeave && state->leave)
        state->leave(state->then);
}

} // namespace kelo::gtk
