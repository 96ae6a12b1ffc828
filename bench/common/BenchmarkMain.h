#pragma once

#include <filesystem>
#include <functional>

namespace kelo::bench {

/// What a benchmark is started with.
struct Order {
    std::filesystem::path build; ///< the build's folder, absolute
    int times = 1;               ///< repetitions, rounds or minutes; at least 1
};

/// The body of main(): BUILD-FOLDER and, if the benchmark counts something, how often. Prints what
/// was wrong. name: of the program. counted: what the number is, "REPETITIONS"; null for none.
/// Returns the exit status.
int benchmarkMain(int count, char** arguments, const char* name, const char* counted,
                  const std::function<void(const Order&)>& run);

} // namespace kelo::bench
