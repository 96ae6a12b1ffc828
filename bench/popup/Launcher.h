#pragma once

#include "common/PaintWatch.h"
#include "common/PanelWatch.h"
#include "testing/screen/Keyboard.h"

#include <filesystem>
#include <vector>

namespace kelo::bench {

/// In milliseconds, one a repetition.
struct LauncherTimes {
    std::vector<double> startToMapped;
    std::vector<double> startToPainted;
    std::vector<double> escapeToUnmapped;
};

/// Times a launcher that is started anew for each use, as a window manager's key binding does, with
/// an empty list. The pixel is one that its window covers.
LauncherTimes timeLauncher(const std::filesystem::path& program, screen::Point pixel,
                           int repetitions, const std::filesystem::path& log);

} // namespace kelo::bench
