#include "linux/startup/ProgramTree.h"

#include "base/async/MainLoop.h"
#include "bundle/ProgramPlace.h"
#include "updater/install/InstallRecovery.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace kelo::startup {

namespace {

constexpr std::chrono::seconds startedAfter{10};

/// Nothing for a program that no update of ours can have replaced: in a build tree, or installed
/// for everybody.
std::optional<std::filesystem::path> programTree() {
    const auto program = bundle::programPath();
    const auto root = bundle::installationPrefix(program);
    if (program != root / "bin" / "kelo" || program.string().starts_with("/usr/"))
        return std::nullopt;
    return root;
}

} // namespace

void repairProgramTree() {
    if (const auto root = programTree())
        updater::repairInstalledTree(*root);
}

void confirmProgramTreeLater() {
    if (const auto root = programTree())
        MainLoop::main().scheduleTimer(startedAfter,
                                       [root = *root] { updater::confirmInstalledTree(root); });
}

} // namespace kelo::startup
