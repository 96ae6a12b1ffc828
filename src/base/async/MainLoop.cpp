#include "base/async/MainLoop.h"

#include "base/Invariant.h"

#include <atomic>

namespace kelo {

namespace {
// Workers post to it, so the pointer itself may be read from any thread.
std::atomic<MainLoop*> installed = nullptr;
} // namespace

MainLoop& MainLoop::main() {
    MainLoop* loop = installed.load();
    if (!loop)
        invariantBroken("a main loop is installed before anything runs");
    return *loop;
}

MainLoop::Installation::Installation(MainLoop& loop) : previous(installed.exchange(&loop)) {}

MainLoop::Installation::~Installation() {
    installed.store(previous);
}

} // namespace kelo
