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

std::string textOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The paths that a page names in backticks, below one of the project's folders.
std::vector<std::string> pathsIn(const fs::path& page) {
    static const std::regex pattern("`((?:src|cmake|data|demo|docs|fuzz|packaging|po|publisher|"
                                    "scripts|testing|tests|bench)(?:/[^`\\s<>*{}]+)?)`");
    const std::string text = textOf(page);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
        found.push_back((*match)[1]);
    return found;
}

/// Whether one of the paths is the folder or something in it.
bool leadTo(const std::vector<std::string>& paths, const std::string& folder) {
    return std::ranges::any_of(paths, [&](const std::string& path) {
        return path == folder || path.starts_with(folder + "/");
    });
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
            EXPECT_TRUE(leadTo(named, room)) << room;
        }
    }
}

// Whoever brings another desktop system must find every interface, and every room that has to be
// replaced.
TEST(PageForPorting, LeadsToEachInterfaceAndEachRoomOfTheSystem) {
    const auto named = pathsIn(root / "docs" / "PORTING.md");
    for (const auto& entry : fs::directory_iterator(root / "src" / "platform")) {
        const bool isInterface = entry.path().extension() == ".h" &&
                                 textOf(entry.path()).find("\n    virtual ") != std::string::npos;
        const std::string header = fs::relative(entry.path(), root).string();
        EXPECT_TRUE(!isInterface || leadTo(named, header)) << header;
    }
    for (const auto& entry : fs::directory_iterator(root / "src" / "linux")) {
        const std::string room = fs::relative(entry.path(), root).string();
        EXPECT_TRUE(!entry.is_directory() || leadTo(named, room)) << room;
    }
}

} // namespace kelo::layers
