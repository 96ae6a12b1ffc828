#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace kelo::fakes {

/// A folder of its own that goes with the test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kelo-test-XXXXXX").string();
        made = ::mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(made, ignored);
    }
    const std::filesystem::path& path() const { return made; }

private:
    std::filesystem::path made;
};

} // namespace kelo::fakes
