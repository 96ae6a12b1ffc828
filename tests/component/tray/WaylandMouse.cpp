// A mouse for scripts on a Wayland desktop, plugged in until its input ends.
//   kelo-wayland-mouse width height
// Reads the lines "move x y", "left" and "right". Answers each with "done" after the compositor has
// processed it.
#include "component/tray/WaylandPointer.h"

#include <exception>
#include <iostream>
#include <linux/input-event-codes.h>
#include <stdexcept>
#include <string>

namespace {

void obey(kelo::tests::WaylandPointer& pointer, const std::string& word) {
    if (word == "move") {
        std::uint32_t x = 0;
        std::uint32_t y = 0;
        if (!(std::cin >> x >> y))
            throw std::runtime_error("move where?");
        pointer.moveTo(x, y);
    } else if (word == "left") {
        pointer.click(BTN_LEFT);
    } else if (word == "right") {
        pointer.click(BTN_RIGHT);
    } else {
        throw std::runtime_error("what is " + word + "?");
    }
}

} // namespace

int main(int count, char** words) {
    try {
        if (count != 3)
            throw std::runtime_error("needs the width and the height of the screen");
        kelo::tests::WaylandPointer pointer(std::stoul(words[1]), std::stoul(words[2]));
        std::cout << "done" << std::endl;
        for (std::string word; std::cin >> word;) {
            obey(pointer, word);
            std::cout << "done" << std::endl;
        }
    } catch (const std::exception& error) {
        std::cerr << "kelo-wayland-mouse: " << error.what() << '\n';
        return 1;
    }
}
