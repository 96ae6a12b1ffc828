#include "bundle/InstalledBundle.h"
#include "fakes/FakeMainLoop.h"
#include "linux/startup/Startup.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

/// Replaces the installed program: starts like it, runs its loop for the given number of seconds
/// (none: not at all), prints the version from its information dictionary and the update that was
/// taken back, and ends as the second argument says: "crash", "exit" from within, "fail", or in
/// order.
int main(int count, char** words) {
    using namespace kelo;
    startup::ProcessStart start({words, words + count});
    fakes::FakeMainLoop loop;
    const MainLoop::Installation installation(loop);
    start.confirmLater();
    if (count > 1) {
        loop.runUntilIdle();
        loop.advance(std::chrono::seconds(std::atoi(words[1])));
        loop.runUntilIdle();
    }
    const auto information = bundle::InstalledBundle().infoDictionary();
    if (!information)
        return 1;
    std::cout << std::get<std::string>(information->at("CFBundleVersion"));
    if (const auto failed = start.failedUpdate())
        std::cout << " instead of " << failed->shownVersion;
    std::cout << std::endl;
    if (count > 2 && std::string_view(words[2]) == "crash")
        std::abort();
    if (count > 2 && std::string_view(words[2]) == "exit")
        std::exit(0);
    return count > 2 && std::string_view(words[2]) == "fail" ? 3 : 0;
}
