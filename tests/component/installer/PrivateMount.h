#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace kelo::tests {

/// A file system in memory of this size that only this process sees.
struct PrivateMount {
    std::filesystem::path place;
    std::string size; ///< as mount(8) takes it

    /// Makes it read-only.
    void makeReadOnly() const;
};

enum class InsideResult { held, failed, notPossibleHere };

/// Runs the action in a child process with the mount. The action returns whether it succeeded.
InsideResult inside(const PrivateMount& mount, const std::function<bool()>& action);

} // namespace kelo::tests
