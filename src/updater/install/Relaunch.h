#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::updater {

/// Starts the program when this process has ended, whatever ends it: in a session of its own, with
/// the environment given (NAME=value) and the standard streams of this process, and with nothing
/// else that is open here. By then this process has given up everything it held, its name on the
/// session bus among it. If this process does not end within five minutes, nothing is started.
/// False when the system would not have it.
bool relaunchAfterThisProcess(const std::filesystem::path& program,
                              const std::vector<std::string>& environment);

} // namespace kelo::updater
