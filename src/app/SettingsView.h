#pragma once

#include "platform/SceneGraph.h"

#include <string>

namespace kelo::app {

/// The settings pane: which build runs, and which service it talks to. There is nothing to set.
struct SettingsView {
    platform::SettingsDescription body() const;

private:
    /// "1.4.2 (57)"; "?" stands for what the bundle does not say.
    static std::string versionString();
};

} // namespace kelo::app
