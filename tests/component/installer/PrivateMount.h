#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace kelo::tests {

/// A file system in memory, of that size, that only this process sees.
struct PrivateMount {
    std::filesystem::path place;
    std::string size; ///< as mount(8) takes it

    /// From now on nothing can be written to it.
    void makeReadOnly() const;
};

enum class InsideResult { held, failed, notPossibleHere };

/// Runs the action in a process of its own, with the mount in place. The action says whether what
/// it looked at was as it should be.
InsideResult inside(const PrivateMount& mount, const std::function<bool()>& action);

} // namespace kelo::tests
