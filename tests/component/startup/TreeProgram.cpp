#include "bundle/InstalledBundle.h"
#include "fakes/FakeMainLoop.h"
#include "linux/startup/Startup.h"

#include <cstdlib>
#include <iostream>

/// Replaces the installed program: starts like it, runs its loop for the given number of seconds,
/// and prints the version from its information dictionary.
int main(int count, char** words) {
    using namespace kelo;
    startup::prepareProcess();
    fakes::FakeMainLoop loop;
    const MainLoop::Installation installation(loop);
    startup::removeFormerVersionLater();
    loop.advance(std::chrono::seconds(count > 1 ? std::atoi(words[1]) : 0));
    loop.runUntilIdle();
    const auto information = bundle::InstalledBundle().infoDictionary();
    if (!information)
        return 1;
    std::cout << std::get<std::string>(information->at("CFBundleVersion")) << std::endl;
    return 0;
}
