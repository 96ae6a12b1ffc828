#include "e2e/UpdateProgramFixture.h"

#include "layers/Command.h"

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace kelo::e2e {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{30};

constexpr const char* notes = "# What is new\n"
                              "\n"
                              "- The widget opens *twice as fast*.\n"
                              "- A passkey can be given a **name**.\n"
                              "\n"
                              "Thanks to everybody who wrote to us.\n";

std::string quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

std::string runOrThrow(const std::string& command) {
    const auto result = layers::run(command);
    if (result.status != 0)
        throw std::runtime_error(command + "\n" + result.output);
    return result.output;
}

/// The tree of this build as people download it, packed and unpacked once for all tests.
const fs::path& downloadedTree(const fs::path& build) {
    static const test::TemporaryFolder folder;
    static const fs::path tree = [&] {
        const fs::path packages = folder.path() / "packages";
        runOrThrow("cd " + quoted(folder.path()) + " && '" KELO_CPACK "' -G TZST --config " +
                   quoted(build / "CPackConfig.cmake") + " -B " + quoted(packages));
        fs::path unpacked = folder.path() / "tree";
        fs::create_directory(unpacked);
        runOrThrow("tar -xf " + quoted(packages) + "/*.tar.zst --strip-components=1 -C " +
                   quoted(unpacked));
        return unpacked;
    }();
    return tree;
}

std::string readFile(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string nameOf(const VersionStamp& version) {
    return "kelo-" + version.version;
}

std::string entry(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>\n";
}

} // namespace

UpdateProgramFixture::UpdateProgramFixture() {
    fs::create_directories(home);
    fs::create_directories(releases);
}

void UpdateProgramFixture::SetUp() {
    startService();
    server = std::make_unique<rig::DownloadServer>(authority, releases);
    reinstall();
}

void UpdateProgramFixture::reinstall() const {
    fs::remove_all(installed);
    fs::copy(downloadedTree(build()), installed, fs::copy_options::recursive);
    stamp(installed, oldVersion, ownKey.publicHalf);
}

void UpdateProgramFixture::TearDown() {
    picture(HasFailure() ? "FAILED" : "end");
    if (HasFailure() && program)
        std::cerr << "Kelo printed:\n" << program->printed() << "\n";
    endCopies();
    endKelo();
    server.reset();
    service.reset();
}

void UpdateProgramFixture::endCopies() {
    program.reset();
    for (const pid_t copy : runningCopies())
        kill(copy, SIGTERM);
    awaitThat("no copy of Kelo runs any more", [&] { return runningCopies().empty(); });
}

UpdateProgramFixture::SigningKey UpdateProgramFixture::makeKey(const std::string& name) const {
    const fs::path file = folder.path() / name;
    const std::string printed = runOrThrow("{ " + quoted(build() / "kelo-appcast") +
                                           " keygen --key " + quoted(file) + " 2>/dev/null; }");
    return {file, printed.substr(0, printed.find('\n'))};
}

void UpdateProgramFixture::stamp(const fs::path& tree, const VersionStamp& stamp,
                                 const std::string& publicKey) const {
    std::ofstream(tree / "share/kelo/Info.plist")
        << "<plist version=\"1.0\"><dict>\n"
        << entry("CFBundleIdentifier", "app.kelo.Kelo") << entry("CFBundleName", "Kelo")
        << entry("CFBundleShortVersionString", stamp.version)
        << entry("CFBundleVersion", stamp.build)
        << entry("SUFeedURL", server->origin() + "/appcast.xml")
        << entry("SUPublicEDKey", publicKey) << "<key>SURequireSignedFeed</key><true/>\n"
        << "</dict></plist>\n";
}

void UpdateProgramFixture::pack(const VersionStamp& version, const SigningKey& key,
                                const std::string& script) {
    const std::string name = nameOf(version);
    const fs::path tree = folder.path() / "build" / name;
    fs::remove_all(tree);
    fs::create_directories(tree.parent_path());
    fs::copy(downloadedTree(build()), tree, fs::copy_options::recursive);
    stamp(tree, version, key.publicHalf);
    if (!script.empty())
        std::ofstream(tree / "libexec/kelo/kelo")
            << "#!/bin/sh\n[ \"$1\" = --help ] && exit 0\n" + script + "\n";
    runOrThrow("tar --zstd -cf " + quoted(releases / (name + ".tar.zst")) + " -C " +
               quoted(tree.parent_path()) + " " + name);
    std::ofstream(releases / (name + ".md")) << notes;
}

void UpdateProgramFixture::withdraw(const VersionStamp& version) const {
    fs::remove(releases / (nameOf(version) + ".tar.zst"));
    fs::remove(releases / (nameOf(version) + ".md"));
}

void UpdateProgramFixture::generate(const SigningKey& key, const SigningKey* next) const {
    runOrThrow(quoted(build() / "kelo-appcast") + " generate --key " + quoted(key.file) +
               (next ? " --next-key " + quoted(next->file) : "") + " " + quoted(releases));
}

void UpdateProgramFixture::publishSignedWith(const SigningKey& key, const std::string& script) {
    pack(newVersion, key, script);
    generate(key);
}

void UpdateProgramFixture::unpack(const VersionStamp& version) const {
    fs::remove_all(installed);
    fs::create_directory(installed);
    runOrThrow("tar -xf " + quoted(releases / (nameOf(version) + ".tar.zst")) +
               " --strip-components=1 -C " + quoted(installed));
}

void UpdateProgramFixture::startInstalled(const std::vector<std::string>& arguments,
                                          std::map<std::string, std::string> environment) {
    environment["HOME"] = home;
    for (const auto& [name, below] :
         {std::pair{"XDG_DATA_HOME", ".local/share"}, std::pair{"XDG_STATE_HOME", ".local/state"},
          std::pair{"XDG_CACHE_HOME", ".cache"}, std::pair{"XDG_CONFIG_HOME", ".config"}}) {
        fs::create_directories(home / below);
        environment[name] = home / below;
    }
    std::vector<std::string> command{installed / "bin/kelo"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    program = std::make_unique<rig::ChildProcess>(command, environment, folder.path() / "kelo.log");
}

void UpdateProgramFixture::ask(const std::string& option) const {
    EXPECT_EQ(exitStatusOf(option), 0) << readFile(folder.path() / "second.log");
}

std::optional<int> UpdateProgramFixture::exitStatusOf(const std::string& option) const {
    rig::ChildProcess second({installed / "bin/kelo", option}, {{"HOME", home}},
                             folder.path() / "second.log");
    return second.awaitExit(patience);
}

void UpdateProgramFixture::awaitInFront(const std::string& title) const {
    awaitThat("the window \"" + title + "\" has the keyboard", [&] {
        const auto active = desktop().screen.windows.active();
        return active && active->title == title;
    });
}

std::string UpdateProgramFixture::installedVersion() const {
    const std::string text = readFile(installed / "share/kelo/Info.plist");
    const std::string before = "<key>CFBundleShortVersionString</key><string>";
    const auto start = text.find(before);
    if (start == std::string::npos)
        return "";
    const std::string rest = text.substr(start + before.size());
    return rest.substr(0, rest.find('<'));
}

std::vector<std::string> UpdateProgramFixture::homeContents() const {
    std::vector<std::string> names;
    for (const auto& item : fs::directory_iterator(home)) {
        const std::string name = item.path().filename();
        if (name != ".local" && name != ".cache" && name != ".config")
            names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

std::vector<pid_t> UpdateProgramFixture::runningCopies() const {
    std::vector<pid_t> copies;
    for (const auto& item : fs::directory_iterator("/proc")) {
        const std::string name = item.path().filename();
        if (!std::ranges::all_of(name, [](char letter) { return letter >= '0' && letter <= '9'; }))
            continue;
        std::error_code gone;
        const std::string executable = fs::read_symlink(item.path() / "exe", gone);
        if (executable.starts_with(home.string() + "/"))
            copies.push_back(static_cast<pid_t>(std::stol(name)));
    }
    return copies;
}

} // namespace kelo::e2e
