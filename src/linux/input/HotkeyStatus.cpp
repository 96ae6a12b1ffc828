#include "linux/input/HotkeyStatus.h"

#include "base/Translation.h"
#include "linux/input/ModifierSources.h"

namespace kelo::input {

std::vector<SourceStatus> hotkeyStatus() {
    const DisplayKind kind = displayKindOfEnvironment();
    std::vector<SourceStatus> status;
    for (const auto& source : sourcesForEveryProgram(kind))
        status.push_back({source->name(), source->availability()});
    if (kind == DisplayKind::wayland)
        status.push_back(
            {"X11",
             {false,
              translated("This is a Wayland desktop, where X11 shows the keyboard only of X11 "
                         "programs."),
              translated("Nothing, if another source is available; otherwise log in to an X11 "
                         "session.")}});
    return status;
}

} // namespace kelo::input
