#include "platform/Desktop.h"

#include "base/Invariant.h"

#include <utility>

namespace kelo::platform {

namespace {
Desktop* installed = nullptr;
} // namespace

Desktop& Desktop::current() {
    if (!installed)
        invariantBroken("a desktop is installed before the system runs");
    return *installed;
}

Desktop::Installation::Installation(Desktop& desktop)
    : previous(std::exchange(installed, &desktop)) {}

Desktop::Installation::~Installation() {
    installed = previous;
}

} // namespace kelo::platform
