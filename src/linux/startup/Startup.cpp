#include "linux/startup/Startup.h"

#include "base/async/MainLoop.h"
#include "bundle/ProgramPlace.h"
#include "linux/startup/OwnVariables.h"
#include "linux/startup/RendererChoice.h"
#include "linux/startup/UnsafeVariables.h"
#include "linux/startup/UserLocale.h"
#include "updater/install/InstallRecovery.h"

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace kelo::startup {

namespace {

constexpr std::chrono::seconds startedAfter{10};

// Each picture of a page is a block of some MB. By default glibc raises this threshold when the
// first one is freed and takes the next ones from the heap, where the holes between them cost 10 MB
// on the login page. Setting the threshold, even to its default, keeps it fixed.
void fixMappingThreshold() {
    constexpr int size = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, size);
}

// The web engine fails to share this driver's buffers between its processes:
// https://bugs.webkit.org/show_bug.cgi?id=262607
// To be removed when every distribution we run on has an engine without that bug. The user's own
// setting takes precedence.
void avoidBlankWindowOnNvidia() {
    if (access("/sys/module/nvidia", F_OK) == 0)
        setenv("WEBKIT_DISABLE_DMABUF_RENDERER", "1", /*overwrite=*/0);
}

/// The root of the installed tree; nothing for a program that the updater cannot have replaced, in
/// a build tree or installed for all users.
std::optional<std::filesystem::path> programTree() {
    const auto program = bundle::programPath();
    const auto root = bundle::installationPrefix(program);
    if (program != root / "bin" / "kelo" || program.string().starts_with("/usr/"))
        return std::nullopt;
    return root;
}

} // namespace

void prepareProcess() {
    unsetUnsafeVariables();
    quietChipLibrary();
    followUserLocale();
    findTranslations(bundle::installationPrefix(bundle::programPath()));
    fixMappingThreshold();
    if (const auto root = programTree())
        updater::repairInstalledTree(*root);
    chooseRenderer();
    avoidBlankWindowOnNvidia();
}

void removeFormerVersionLater() {
    if (const auto root = programTree())
        MainLoop::main().scheduleTimer(startedAfter,
                                       [root = *root] { updater::confirmInstalledTree(root); });
}

} // namespace kelo::startup
