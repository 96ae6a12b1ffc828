#include "bundle/InstalledBundle.h"
#include "fakes/FakeMainLoop.h"
#include "linux/startup/Startup.h"

#include <cstdlib>
#include <iostream>

/// Stands in for the installed program: starts as it does, runs its loop for the seconds given, and
/// prints the version that its information dictionary names.
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
