#pragma once

#include "common/WindowWatch.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kelo::bench {

/// How a program is started.
struct Launch {
    std::vector<std::string> command;
    std::map<std::string, std::string> environment;
};

/// A program to measure.
struct Candidate {
    std::string name;
    /// Of a start that keeps its files below the folder.
    std::function<Launch(const std::filesystem::path&)> launch;
    /// Pixels that only the page colours, in a first start and in later ones, found by starts that
    /// are not measured.
    Pixel paintedFirst{};
    Pixel paintedLater{};
};

} // namespace kelo::bench
