#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace kelo::updater {

/// Whether the program starts here at all: run with --help, it ends well within the time. It runs
/// with nothing to read or to write to. Blocks.
bool printsHelp(const std::filesystem::path& program, std::chrono::milliseconds deadline);

/// Has a program found in PATH open a file: runs it with that argument. True once it has ended
/// well, and also when it still runs after the time: some openers stay as long as what they opened.
/// Blocks.
bool opensFile(const std::string& program, const std::string& argument,
               std::chrono::milliseconds deadline);

} // namespace kelo::updater
