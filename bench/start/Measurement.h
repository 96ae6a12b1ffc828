#pragma once

#include "start/Candidate.h"
#include "testing/rig/ChildProcess.h"

#include <filesystem>

namespace kelo::bench {

/// Milliseconds from the start.
struct StartTimes {
    double mapped = 0;
    double painted = 0;
};

/// What a program costs that shows a page and is left alone. Memory is the proportional set size in
/// MiB, wake-ups are voluntary context switches per second.
struct IdleCost {
    double interfaceMemory = 0;
    double treeMemory = 0;
    double interfaceWakeUps = 0;
    double treeWakeUps = 0;
};

// All throw std::runtime_error when the page does not come.

/// Starts the candidate and finds a pixel that the page colours.
Pixel findPaintedPixel(const WindowWatch& watch, const std::string& name, const Launch& launch,
                       const std::filesystem::path& log);

/// A start, and its end. What it costs is measured too, over some seconds, if it is wanted.
StartTimes measure(const WindowWatch& watch, const std::string& name, const Launch& launch,
                   Pixel painted, const std::filesystem::path& log, IdleCost* cost = nullptr);

/// The times of a program that has been started.
StartTimes awaitStart(const WindowWatch& watch, const std::string& name, Pixel painted,
                      WindowWatch::Clock::time_point start, const rig::ChildProcess& process);

} // namespace kelo::bench
