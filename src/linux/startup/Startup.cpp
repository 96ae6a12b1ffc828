#include "linux/startup/Startup.h"

#include "base/async/MainLoop.h"
#include "bundle/ProgramPlace.h"
#include "linux/locale/UserLocale.h"
#include "linux/startup/OwnVariables.h"
#include "linux/startup/RendererChoice.h"
#include "linux/startup/UnsafeVariables.h"
#include "posix/Moments.h"
#include "updater/tree/ProgramStart.h"

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace kelo::startup {

namespace {

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

/// Runs the tree's program in the place of this one. Returns only if that failed.
void runInstead(const std::filesystem::path& root, std::vector<std::string> words) {
    const std::string program = root / "bin" / "kelo";
    std::vector<char*> list;
    for (auto& word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    execv(program.c_str(), list.data());
}

} // namespace

ProcessStart::ProcessStart(const std::vector<std::string>& words) {
    using Replacement = updater::TreeStart::Replacement;
    posix::followMoments();
    posix::mark(posix::Moment::mainEntered);
    if (const auto root = programTree()) {
        // Opened now: it is this tree's, which an update moves away.
        const posix::FileDescriptor watcher = updater::openStartWatcher(*root);
        trial = std::make_shared<Trial>(Trial{updater::TreeStart(*root)});
        if (trial->tree.replacement() == Replacement::byUpdate)
            updater::watchThisProcess(watcher, *root, words);
        if (trial->tree.replacement() != Replacement::none)
            runInstead(*root, words);
        // Not at the end of main(): the toolkit exits by itself after it has shown its help.
        on_exit(&ended, new std::shared_ptr(trial));
    }
    unsetUnsafeVariables();
    quietChipLibrary();
    locale::followUserLocale();
    locale::findTranslations(bundle::installationPrefix(bundle::programPath()));
    fixMappingThreshold();
    chooseRenderer();
    avoidBlankWindowOnNvidia();
}

void ProcessStart::confirmLater() {
    if (!trial)
        return;
    MainLoop::main().post([trial = trial] { trial->loopRan = true; });
    MainLoop::main().scheduleTimer(startedAfter, [trial = trial] { trial->tree.confirm(); });
}

void ProcessStart::ended(int status, void* shared) {
    const std::unique_ptr<std::shared_ptr<Trial>> trial(
        static_cast<std::shared_ptr<Trial>*>(shared));
    if (status != 0)
        return;
    if ((*trial)->loopRan)
        (*trial)->tree.confirm();
    else
        (*trial)->tree.setAside();
}

std::optional<updater::TreeUpdate> ProcessStart::failedUpdate() const {
    return trial ? trial->tree.failedUpdate() : std::nullopt;
}

} // namespace kelo::startup
