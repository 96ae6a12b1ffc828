#pragma once

#include <functional>
#include <vector>

namespace kelo::window {

/// A page that may lose something of the user's when it is left.
class OpenPage {
public:
    virtual ~OpenPage() = default;
    /// Asks the page, and the user if the page wants that. decided is called once, perhaps at once,
    /// or not at all if the page goes.
    virtual void tryToLeave(std::function<void(bool leaves)> decided) = 0;
};

/// The pages that are asked before the program ends. Main thread only.
class OpenPages {
public:
    /// The page must be removed before it is destroyed.
    void add(OpenPage& page);
    void remove(OpenPage& page);

    /// Asks one page after the other. decided is called once: with false as soon as one of them is
    /// to stay, with true when all may be left. Ignored while the pages are being asked already.
    void leaveAll(std::function<void(bool leave)> decided);

private:
    void askNext();
    void end(bool leave);

    std::vector<OpenPage*> pages;
    std::vector<OpenPage*> unasked;
    OpenPage* asked = nullptr;
    std::function<void(bool leave)> decided;
};

} // namespace kelo::window
