#include "linux/input/ModifierSources.h"

#include "linux/input/evdev/EvdevModifierSource.h"
#include "linux/input/portal/PortalModifierSource.h"
#include "linux/input/xkb/XkbModifierSource.h"

namespace kelo::input {

SourceList sourcesForEveryProgram(DisplayKind kind, const std::string& displayName) {
    SourceList sources;
    // On a Wayland desktop, the X server sees the keys only while one of its own windows has the
    // keyboard.
    if (kind != DisplayKind::wayland)
        sources.push_back(std::make_unique<XkbModifierSource>(displayName));
    sources.push_back(std::make_unique<EvdevModifierSource>());
    sources.push_back(std::make_unique<PortalModifierSource>());
    return sources;
}

} // namespace kelo::input
