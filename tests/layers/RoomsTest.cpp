#include "layers/Command.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace kelo::layers {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

const fs::path source = fs::path(KELO_SOURCE_FOLDER) / "src";

struct Include {
    std::string where; ///< "file:line"
    std::string what;
    bool quoted = false;
};

std::vector<Include> includesOf(const std::string& room) {
    static const std::regex pattern(R"re(^\s*#\s*include\s*([<"])([^>"]+)[>"])re");
    std::vector<Include> found;
    for (const auto& entry : fs::recursive_directory_iterator(source / room)) {
        const auto extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp" && extension != ".in")
            continue;
        std::ifstream file(entry.path());
        std::string line;
        for (int number = 1; std::getline(file, line); ++number) {
            std::smatch match;
            if (std::regex_search(line, match, pattern))
                found.push_back(
                    {fs::relative(entry.path(), source).string() + ":" + std::to_string(number),
                     match[2], match[1] == "\""});
        }
    }
    return found;
}

/// The header of ours that is included, as "room/…", whatever brackets it stands in.
bool isOf(const Include& include, const std::string& room) {
    return include.what.starts_with(room + "/");
}

// Headers of the standard library are single words: no folder, no ".h".
bool isStandard(const Include& include) {
    return !include.quoted && include.what.find_first_of("./") == std::string::npos;
}

/// What the room includes beyond the standard library, the rooms and the libraries named.
std::vector<std::string> strangers(const std::string& room, const std::vector<std::string>& rooms,
                                   const std::vector<std::string>& libraries) {
    std::vector<std::string> found;
    for (const auto& include : includesOf(room)) {
        const auto isInclude = [&](const std::string& folder) { return isOf(include, folder); };
        if (!isStandard(include) && std::ranges::none_of(rooms, isInclude) &&
            std::ranges::none_of(libraries, isInclude))
            found.push_back(include.where + " includes " + include.what);
    }
    return found;
}

CommandResult compile(const std::string& room, const std::string& header) {
    std::ifstream list(fs::path(KELO_INCLUDE_FOLDERS) / (room + ".txt"));
    std::string command = "printf '#include \"" + header +
                          "\"\\n' | '" KELO_COMPILER "' -std=c++20 -x c++ -fsyntax-only";
    std::string folder;
    while (std::getline(list, folder)) {
        if (!folder.empty())
            command += " -I'" + folder + "'";
    }
    return run(command + " -");
}

} // namespace

TEST(Rooms, ThePlatformKnowsNothingButTheStandardLibrary) {
    EXPECT_THAT(strangers("platform", {"platform"}, {}), IsEmpty());
}

TEST(Rooms, TheLogKnowsOnlyThePlatform) {
    EXPECT_THAT(strangers("log", {"log", "platform"}, {}), IsEmpty());
}

TEST(Rooms, ThePasskeyFlowsKnowNoViewAndNoDesktop) {
    EXPECT_THAT(strangers("passkey", {"passkey", "platform", "deployment"}, {"nlohmann"}),
                IsEmpty());
}

TEST(Rooms, TheWebRoomKnowsThePasskeyFlowsButNoVoice) {
    EXPECT_THAT(strangers("web", {"web", "passkey", "platform", "deployment"}, {"nlohmann"}),
                IsEmpty());
}

TEST(Rooms, TheVoiceRoomKnowsNoApplication) {
    EXPECT_THAT(strangers("voice", {"voice", "web", "passkey", "log", "platform", "deployment"},
                          {"nlohmann"}),
                IsEmpty());
}

TEST(Rooms, TheApplicationKnowsTheSystemAndNoDesktop) {
    EXPECT_THAT(strangers("app",
                          {"app", "voice", "web", "passkey", "log", "platform", "deployment"},
                          {"nlohmann"}),
                IsEmpty());
}

TEST(Rooms, TheDesktopNeverLooksBackUp) {
    std::vector<std::string> found;
    for (const auto& include : includesOf("linux")) {
        for (const auto* room : {"app", "web", "passkey", "voice", "log"}) {
            if (isOf(include, room))
                found.push_back(include.where + " includes " + include.what);
        }
    }
    EXPECT_THAT(found, IsEmpty());
}

TEST(Rooms, TheAuthenticatorIsFreeOfToolkits) {
    std::vector<std::string> found;
    for (const auto& include : includesOf("authenticator")) {
        const bool ofOurs = isOf(include, "authenticator") || isOf(include, "platform");
        const bool ofToolkit = std::regex_search(
            include.what,
            std::regex("^(g(lib|io|object|tk|tkmm|dk|dkmm|module)|glibmm|giomm|webkit|"
                       "libsoup|libsecret|pango|cairo|X11)"));
        if ((include.quoted && !ofOurs) || ofToolkit)
            found.push_back(include.where + " includes " + include.what);
    }
    EXPECT_THAT(found, IsEmpty());
}

TEST(Rooms, TheScanFindsWhatItLooksFor) {
    // Guards the tests above against a pattern that matches nothing.
    EXPECT_GT(includesOf("platform").size(), 30U);
    EXPECT_THAT(strangers("platform", {}, {}), testing::Not(IsEmpty()));
}

class SystemRoom : public testing::TestWithParam<std::string> {};

TEST_P(SystemRoom, DoesNotCompileWithAHeaderOfTheDesktop) {
    for (const auto* header : {"gtk/gtk.h", "glib.h", "gtkmm.h", "webkit/webkit.h",
                               "linux/glib/GLibMainLoop.h", "authenticator/KeyStore.h"}) {
        const CommandResult result = compile(GetParam(), header);
        EXPECT_NE(result.status, 0) << header;
        EXPECT_THAT(result.output, HasSubstr("No such file or directory"));
    }
}

TEST_P(SystemRoom, CompilesWithTheSeam) {
    const CommandResult result = compile(GetParam(), "platform/Task.h");
    EXPECT_EQ(result.status, 0) << result.output;
}

INSTANTIATE_TEST_SUITE_P(Each, SystemRoom,
                         testing::Values("platform", "log", "passkey", "web", "voice", "app"),
                         [](const auto& room) { return room.param; });

} // namespace kelo::layers
