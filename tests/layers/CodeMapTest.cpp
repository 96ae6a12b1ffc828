#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace kelo::layers {

namespace {

namespace fs = std::filesystem;

const fs::path root = KELO_SOURCE_FOLDER;

/// The paths that a page names in backticks, below one of the project's folders.
std::vector<std::string> pathsIn(const fs::path& page) {
    static const std::regex pattern("`((?:src|cmake|data|demo|docs|fuzz|publisher|scripts|testing|"
                                    "tests|bench)(?:/[^`\\s<>*{}]+)?)`");
    std::ifstream file(page);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
        found.push_back((*match)[1]);
    return found;
}

} // namespace

TEST(CodeMap, NamesOnlyWhatExists) {
    std::vector<fs::path> pages{root / "CONTRIBUTING.md", root / "SECURITY.md"};
    for (const auto& entry : fs::recursive_directory_iterator(root / "docs")) {
        if (entry.path().extension() == ".md")
            pages.push_back(entry.path());
    }
    for (const fs::path& page : pages) {
        for (const std::string& path : pathsIn(page))
            EXPECT_TRUE(fs::exists(root / path)) << page.filename() << " names " << path;
    }
}

TEST(CodeMap, LeadsToEachRoom) {
    const auto named = pathsIn(root / "docs" / "ARCHITECTURE.md");
    for (const auto* wing : {"src", "src/linux", "src/linux/gtk", "src/linux/authorization",
                             "src/updater", "src/authenticator"}) {
        for (const auto& entry : fs::directory_iterator(root / wing)) {
            if (!entry.is_directory())
                continue;
            const std::string room = fs::relative(entry.path(), root).string();
            const auto leadsThere = [&](const std::string& path) {
                return path == room || path.starts_with(room + "/");
            };
            EXPECT_TRUE(std::ranges::any_of(named, leadsThere)) << room;
        }
    }
}

} // namespace kelo::layers
