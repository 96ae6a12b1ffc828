// The files for packagers of other distributions agree with this tree. That they can be built there
// is not tried here.
#include "component/packaging/Packages.h"

#include "deployment/Deployment.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path root = KELO_SOURCE_FOLDER;
const fs::path flatpak = root / "packaging/flatpak/app.kelo.Kelo.yaml";
const fs::path spec = root / "packaging/rpm/kelo.spec";

std::set<std::string> matches(const std::string& text, const std::string& pattern) {
    const std::regex expression(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match)
        found.insert((*match)[1]);
    return found;
}

/// All files of the folder with one of these names or extensions, one after the other.
std::string textsBelow(const fs::path& folder, const std::set<std::string>& kinds) {
    std::string text;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (kinds.contains(entry.path().extension()) || kinds.contains(entry.path().filename()))
            text += readFile(entry.path());
    return text;
}

std::string buildDescription() {
    return textsBelow(root / "cmake", {".cmake"}) + textsBelow(root / "src", {"CMakeLists.txt"}) +
           readFile(root / "CMakeLists.txt");
}

/// What a spec's line stands for.
std::string expanded(std::string line) {
    const std::map<std::string, std::string> macros{{"%{_sysconfdir}", "/etc"},
                                                    {"%{_prefix}", "/usr"},
                                                    {"%{_bindir}", "/usr/bin"},
                                                    {"%{_datadir}", "/usr/share"},
                                                    {"%{_mandir}", "/usr/share/man"}};
    for (const auto& [macro, path] : macros)
        if (const auto at = line.find(macro); at != std::string::npos)
            line.replace(at, macro.size(), path);
    return line;
}

/// The files that the components install which are for every package.
std::string installedFiles(const fs::path& folder) {
    const auto installed = runCommand(
        "for component in Unspecified system; do DESTDIR='" + folder.string() +
        "' '" KELO_CMAKE "' --install '" KELO_BUILD_FOLDER "' --prefix /usr --component $component "
        "|| exit 1; done >'" +
        (folder / "log").string() + "' && rm '" + (folder / "log").string() + "' && cd '" +
        folder.string() + "' && find . -type f | sed 's/^.//' | sort");
    EXPECT_EQ(installed.status, 0) << installed.output;
    return installed.output;
}

bool fits(const std::string& path, const std::string& pattern) {
    std::string expression;
    for (const char character : pattern)
        expression +=
            character == '*' ? "[^/]*" : (character == '.' ? "\\." : std::string(1, character));
    return std::regex_match(path, std::regex(expression));
}

} // namespace

TEST(FlatpakManifest, CarriesTheNameOfTheProgram) {
    const auto manifest = readFile(flatpak);
    EXPECT_THAT(manifest, HasSubstr("\nid: " + std::string(deployment::applicationIdentifier)));
    EXPECT_EQ(flatpak.stem(), deployment::applicationIdentifier);
    EXPECT_THAT(manifest, HasSubstr("\ncommand: kelo\n"));
}

TEST(FlatpakManifest, SetsOnlyWhatTheBuildKnows) {
    const auto known = buildDescription();
    const auto set = matches(readFile(flatpak), "-D(KELO_[A-Z_]+)");
    EXPECT_FALSE(set.empty());
    for (const auto& variable : set)
        EXPECT_TRUE(std::regex_search(known, std::regex("(set|option)\\(" + variable + "\\b")))
            << variable;
}

// Names that need no permission: the portals', and those of the bus itself.
TEST(FlatpakManifest, PermitsTheNamesThatTheProgramAsksForAndNoOthers) {
    const auto code = textsBelow(root / "src/linux", {".cpp", ".h"});
    auto asked = matches(code, "\"(org\\.[a-z]+\\.(?:ScreenSaver|StatusNotifierWatcher|"
                               "Notifications|FileManager1|login1))\"");
    asked.insert("org.freedesktop.secrets"); // named by the library for the keyring
    EXPECT_EQ(matches(readFile(flatpak), "-talk-name=([A-Za-z0-9.]+)"), asked);
}

TEST(RpmSpec, ListsWhatIsInstalled) {
    const TreeFolder folder;
    const auto installed = matches(installedFiles(folder.path()), "(/[^\n]+)\n");
    const auto text = readFile(spec);
    auto listed =
        matches(text.substr(text.find("\n%files")), "\n(?:%config\\(noreplace\\) )?(%\\{[^\n]+)");
    for (const auto& path : installed) {
        const bool isTranslation = path.ends_with("/kelo.mo"); // %find_lang lists them
        EXPECT_TRUE(isTranslation || std::ranges::any_of(listed,
                                                         [&](const std::string& line) {
                                                             return fits(path, expanded(line));
                                                         }))
            << path << " is not listed";
    }
    for (const auto& line : listed)
        EXPECT_TRUE(std::ranges::any_of(
            installed, [&](const std::string& path) { return fits(path, expanded(line)); }))
            << line << " is not installed";
}

TEST(RpmSpec, NeedsEachLibraryThatTheBuildLooksFor) {
    const auto description = buildDescription();
    const auto needed = matches(readFile(spec), "BuildRequires: +pkgconfig\\(([^)]+)\\)");
    for (const auto& call : matches(description, "pkg_check_modules\\(([^)]+)\\)"))
        for (const auto& module : matches(call, "([a-z][a-z0-9+.]*-?[0-9a-z.-]*)(?= |$)")) {
            // Comes with gtk4's own requirements.
            if (module == "gio-2.0" || module == "gio-unix-2.0" || module == "glib-2.0")
                continue;
            EXPECT_TRUE(needed.contains(module)) << module;
        }
}

TEST(RpmSpec, CarriesTheVersionOfTheProject) {
    const auto version =
        matches(readFile(root / "CMakeLists.txt"), "project\\(Kelo VERSION ([0-9.]+)");
    ASSERT_EQ(version.size(), 1U);
    EXPECT_THAT(readFile(spec), testing::ContainsRegex("\nVersion: +" + *version.begin() + "\n"));
}

} // namespace kelo::tests
