#pragma once

#include "start/WindowWatch.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelo::bench {

/// A program to measure, and how it is started.
struct Candidate {
    std::string name;
    std::vector<std::string> command;
    std::map<std::string, std::string> environment;
    /// A pixel that only the page colours, found by a start that is not measured.
    Pixel painted;
};

/// The results of one start. Smaller is better for all of them.
enum class Quantity { mapped, painted, interfaceMemory, treeMemory, interfaceWakeUps, treeWakeUps };
inline constexpr std::size_t quantityCount = 6;
using Sample = std::array<double, quantityCount>;

struct QuantityLabel {
    const char* name;
    const char* unit;
};
inline constexpr std::array<QuantityLabel, quantityCount> quantityLabels{{
    {"start to window mapped", "ms"},
    {"start to page painted", "ms"},
    {"memory, interface process", "MiB"},
    {"memory, all processes", "MiB"},
    {"idle wake-ups, interface process", "/s"},
    {"idle wake-ups, all processes", "/s"},
}};

/// Starts the candidate and finds a pixel that the page colours. Throws std::runtime_error when the
/// page does not come.
Pixel findPaintedPixel(const WindowWatch& watch, const Candidate& candidate,
                       const std::filesystem::path& log);

/// One start, from nothing to idle, and its end.
Sample measure(const WindowWatch& watch, const Candidate& candidate,
               const std::filesystem::path& log);

} // namespace kelo::bench
