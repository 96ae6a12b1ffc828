#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace kelo::layers {

namespace {

namespace fs = std::filesystem;

/// Where the program's own files match, as "file:line".
std::vector<std::string> placesOf(const std::string& pattern) {
    const std::regex sought(pattern);
    const fs::path root = fs::path(KELO_SOURCE_FOLDER) / "src";
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const fs::path& path = entry.path();
        if (path.extension() != ".cpp" && path.extension() != ".h")
            continue;
        std::ifstream file(path);
        int number = 1;
        for (std::string line; std::getline(file, line); ++number)
            if (std::regex_search(line, sought))
                found.push_back(fs::relative(path, root).string() + ":" + std::to_string(number));
    }
    return found;
}

/// Whether something is said in one file alone.
testing::AssertionResult isSaidOnlyIn(const std::string& file, const std::string& pattern) {
    const auto places = placesOf(pattern);
    for (const auto& place : places)
        if (!place.starts_with(file + ":"))
            return testing::AssertionFailure() << place << " says it, not " << file << " alone";
    return places.empty() ? testing::AssertionFailure() << file << " does not say it"
                          : testing::AssertionSuccess();
}

} // namespace

TEST(Toolkit, IsAskedAboutX11InOneFile) {
    EXPECT_TRUE(isSaidOnlyIn("linux/window/X11Toolkit.cpp", "gdkx\\.h"));
    EXPECT_TRUE(isSaidOnlyIn("linux/window/X11Toolkit.cpp", "gdk_x11_|GDK_IS_X11_"));
}

TEST(Toolkit, IsAskedForItsVersionInOneFile) {
    EXPECT_TRUE(isSaidOnlyIn("linux/window/ToolkitVersion.h",
                             "G[DT]K_CHECK_VERSION|gtk_(check|get_(major|minor|micro))_version|"
                             "G[DT]K_(MAJOR|MINOR|MICRO)_VERSION"));
}

// The file that runs is not the command that was started, so who looks for what lies beside it asks
// there. The helper stands for itself, and has its files beside it.
TEST(ProgramPlace, IsAskedOfTheKernelInOneFile) {
    for (const auto& place : placesOf("/proc/self/exe"))
        EXPECT_TRUE(place.starts_with("bundle/ProgramPlace.cpp:") ||
                    place.starts_with("linux/authorization/helper/PamService.cpp:"))
            << place;
}

} // namespace kelo::layers
