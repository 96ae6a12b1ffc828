#include "linux/integration/MenuFiles.h"

#include "base/Utf8.h"
#include "deployment/Deployment.h"
#include "linux/login/StartAtLogin.h"

#include <glib.h>

#include <algorithm>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelo::integration {

namespace {

namespace fs = std::filesystem;

const std::string name(deployment::applicationIdentifier);

/// The tree's own entry starts the program by its name on the search path, for it does not know
/// where it lies. With "TryExec" a desktop does not show an entry whose program is gone.
std::string placed(const std::string& entry, const std::string& program) {
    constexpr std::string_view byName = "Exec=kelo";
    std::string text;
    bool isMain = true;
    std::istringstream lines(entry);
    for (std::string line; std::getline(lines, line); text += line + "\n") {
        if (!line.starts_with(byName))
            continue;
        line = "Exec=" + login::execWord(program) + line.substr(byName.size());
        if (std::exchange(isMain, false))
            line += "\nTryExec=" + login::entryText(program) + "\nDBusActivatable=true";
    }
    return text;
}

/// The bus takes the line apart as a shell does, after it has read "\\" as one backslash.
std::string serviceFor(const std::string& program) {
    char* const quoted = g_shell_quote(program.c_str());
    const std::string word = quoted;
    g_free(quoted);
    return "[D-BUS Service]\nName=" + name + "\nExec=" + login::entryText(word) + " --background\n";
}

} // namespace

std::string entryPath() {
    return "applications/" + name + ".desktop";
}

std::optional<MadeFiles::Contents> menuFiles(const fs::path& tree, const fs::path& program) {
    const auto entry = readFile(tree / "share" / entryPath());
    if (!entry)
        return std::nullopt;
    MadeFiles::Contents files;
    files[entryPath()] = placed(*entry, program);
    files["dbus-1/services/" + name + ".service"] = serviceFor(program);
    std::error_code failure;
    const auto share = tree / "share";
    for (fs::recursive_directory_iterator icon(share / "icons", failure), end;
         !failure && icon != end; icon.increment(failure))
        if (icon->is_regular_file(failure))
            if (auto content = readFile(icon->path()))
                files[icon->path().lexically_relative(share)] = std::move(*content);
    return files;
}

bool canBeNamed(const fs::path& program) {
    const std::string& path = program.native();
    return isWellFormedUtf8(path) && std::ranges::none_of(path, [](char character) {
               const auto value = static_cast<unsigned char>(character);
               return value < 0x20 || value == 0x7f;
           });
}

} // namespace kelo::integration
