#include "linux/window/OpenPages.h"

#include <utility>

namespace kelo::window {

void OpenPages::add(OpenPage& page) {
    pages.push_back(&page);
}

void OpenPages::remove(OpenPage& page) {
    std::erase(pages, &page);
    std::erase(unasked, &page);
    // A page that has gone objects no more.
    if (asked == &page)
        askNext();
}

void OpenPages::leaveAll(std::function<void(bool leave)> given) {
    if (decided)
        return;
    decided = std::move(given);
    unasked = pages;
    askNext();
}

void OpenPages::askNext() {
    if (unasked.empty())
        return end(true);
    asked = unasked.front();
    unasked.erase(unasked.begin());
    asked->tryToLeave([this](bool leaves) {
        if (leaves)
            askNext();
        else
            end(false);
    });
}

void OpenPages::end(bool leave) {
    asked = nullptr;
    unasked.clear();
    if (const auto tell = std::exchange(decided, nullptr))
        tell(leave);
}

} // namespace kelo::window
