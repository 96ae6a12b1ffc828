#include "linux/command/ProgramOptions.h"

#include "base/Translation.h"
#include "deployment/Deployment.h"

namespace kelo::command {

std::vector<Option> programOptions() {
    return {
        {"open", translated("Open the main window, or raise it when it is open")},
        {"settings", translated("Open the settings")},
        {"passkeys", translated("Show the passkeys that are kept on this computer")},
        {"background", translated("Start without a window")},
        {quitOption, translated("End the running program, if there is one")},
        {"widget", translated("Show the voice widget, or hide it when it is shown")},
        {"check-for-updates", translated("Look for a newer version")},
        {versionOption, translated("Show the version, then exit"), Option::Kind::report},
        {"hotkey-status", translated("Show which input sources the hotkey can use, then exit"),
         Option::Kind::report},
        {"integrate", translated("Put this unpacked copy into your menu, then exit"),
         Option::Kind::report},
        {"remove", translated("Take it out of your menu again, then exit"), Option::Kind::report},
    };
}

std::string versionLine() {
    return "Kelo " + std::string(deployment::shownVersion) + " (" +
           std::string(deployment::buildNumber) + ")";
}

} // namespace kelo::command
