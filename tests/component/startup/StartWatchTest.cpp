#include "updater/tree/StartWatch.h"

#include "component/installer/Trees.h"
#include "layers/Command.h"
#include "updater/install/TreeInstaller.h"
#include "updater/tree/InstallRecovery.h"
#include "updater/tree/ProgramStart.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using updater::WatchDeadlines;
using updater::WatchResult;

/// 1.1 was installed over 1.0, and its program is about to be started for the first time.
class StartWatch : public testing::Test {
protected:
    StartWatch() {
        writeTree(root, "1.0");
        fs::copy_file(KELO_WATCH_START, root / updater::startWatcherPath);
        useTreeProgram(root);
        listFiles(root);
        before = contentsOf(root);
        writeTree(folder / "later", "1.1");
        useTreeProgram(folder / "later");
    }

    static void useTreeProgram(const fs::path& tree) {
        fs::copy_file(KELO_TREE_PROGRAM, tree / "bin/kelo", fs::copy_options::overwrite_existing);
    }

    static void listFiles(const fs::path& tree) {
        std::string list;
        for (const auto& [path, content] : contentsOf(tree))
            list += path + "\n";
        writeFile(tree / "share/kelo/files.txt", list);
    }

    void stage(updater::ExchangeCalls calls = {}) const {
        packTree(folder / "later", "kelo-1.1", archive);
        updater::TreeInstaller installer(root, std::move(calls));
        installer.stage(openForReading(archive).get(), "1.1");
    }

    void install(updater::ExchangeCalls calls = {}) const {
        packTree(folder / "later", "kelo-1.1", archive);
        updater::TreeInstaller installer(root, std::move(calls));
        installer.stage(openForReading(archive).get(), "1.1");
        installer.install();
    }

    /// Has the release do this when it is started, except for --help.
    void release(const std::string& script) const {
        writeFile(folder / "later/bin/kelo",
                  "#!/bin/sh\n[ \"$1\" = --help ] && exit 0\n" + script + "\n", 0755);
    }

    WatchResult watch(const std::vector<std::string>& arguments = {},
                      std::chrono::milliseconds confirmation = std::chrono::minutes(1),
                      const updater::ExchangeCalls& calls = {}) const {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ::close(ends[1]); // the process before has ended
        std::vector<std::string> start{root / "bin/kelo"};
        start.insert(start.end(), arguments.begin(), arguments.end());
        WatchDeadlines deadlines;
        deadlines.confirmation = confirmation;
        return updater::watchStart(root, posix::FileDescriptor(ends[0]), start, deadlines, calls);
    }

    /// The program has confirmed its start, and removes this while nobody watches it any more.
    static bool isRemoved(const fs::path& folder) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (fs::exists(folder) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        return !fs::exists(folder);
    }

    void expectTheTreeBefore() const {
        EXPECT_EQ(contentsOf(root), before);
        EXPECT_EQ(layers::run("'" + (root / "bin/kelo").string() + "' 15").output,
                  "1.0 instead of 1.1\n");
        EXPECT_FALSE(fs::exists(beside));
        EXPECT_EQ(layers::run("'" + (root / "bin/kelo").string() + "' 15").output, "1.0\n")
            << "it is said once";
    }

    TreeFolder folder;
    fs::path root = folder / "home/Kelo";
    fs::path beside = folder / "home/.Kelo.kelo-update";
    fs::path archive = folder / "kelo-1.1.tar.zst";
    Contents before;
};

} // namespace

TEST_F(StartWatch, EndsWhenTheStartWasConfirmed) {
    install();
    EXPECT_EQ(watch({"15"}), WatchResult::confirmed);
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.1"));
    EXPECT_TRUE(isRemoved(beside));
}

TEST_F(StartWatch, LeavesAProgramAloneThatItsUserQuitsSoon) {
    install();
    EXPECT_EQ(watch({"2"}), WatchResult::confirmed);
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.1"));
    EXPECT_TRUE(isRemoved(beside));
}

// As the toolkit does for --help.
TEST_F(StartWatch, LeavesAProgramAloneThatExitsFromWithin) {
    install();
    EXPECT_EQ(watch({"2", "exit"}), WatchResult::confirmed);
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.1"));
}

TEST_F(StartWatch, LeavesAProgramAloneThatHandedOverToARunningOne) {
    install();
    EXPECT_EQ(watch(), WatchResult::confirmed);
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.1"));
    EXPECT_TRUE(fs::exists(beside / "old/bin/kelo"));
}

TEST_F(StartWatch, TakesBackAReleaseThatExits) {
    for (const auto* status : {"0", "3"}) {
        release(std::string("exit ") + status);
        install();
        EXPECT_EQ(watch(), WatchResult::takenBack);
        expectTheTreeBefore();
    }
}

TEST_F(StartWatch, TakesBackAReleaseThatCrashes) {
    install();
    EXPECT_EQ(watch({"2", "crash"}), WatchResult::takenBack);
    expectTheTreeBefore();
}

TEST_F(StartWatch, TakesBackAReleaseThatFailsBeforeItsStartIsConfirmed) {
    install();
    EXPECT_EQ(watch({"2", "fail"}), WatchResult::takenBack);
    expectTheTreeBefore();
}

TEST_F(StartWatch, LeavesTheTrialToAnotherStartThatIsUnderWay) {
    release("exit 1");
    install();
    const updater::TreeStart other(root);
    EXPECT_EQ(watch(), WatchResult::confirmed);
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.1"));
}

TEST_F(StartWatch, TakesBackAReleaseThatHangs) {
    release("exec sleep 1000");
    install();
    EXPECT_EQ(watch({}, std::chrono::milliseconds(300)), WatchResult::takenBack);
    EXPECT_NE(layers::run("pgrep -f 'sleep 100[0]' -s 0").status, 0);
    expectTheTreeBefore();
}

TEST_F(StartWatch, TakesBackAReleaseThatLacksALibrary) {
    install();
    fs::copy_file(KELO_LACKING_PROGRAM, root / "bin/kelo", fs::copy_options::overwrite_existing);
    EXPECT_EQ(watch(), WatchResult::takenBack);
    expectTheTreeBefore();
}

TEST_F(StartWatch, TakesBackAReleaseThatCannotBeRunAtAll) {
    install();
    writeFile(root / "bin/kelo", "#!/nowhere/such-loader\n", 0755);
    EXPECT_EQ(watch(), WatchResult::takenBack);
    expectTheTreeBefore();
}

TEST_F(StartWatch, TakesBackWhatWasExchangedPieceByPiece) {
    updater::ExchangeCalls calls;
    calls.exchange = [](int, const char*, int, const char*) { return EINVAL; };
    release("exit 1");
    install(calls);
    EXPECT_EQ(watch({}, std::chrono::minutes(1), calls), WatchResult::takenBack);
    expectTheTreeBefore();
}

TEST_F(StartWatch, StartsNothingWhileTheProcessBeforeRuns) {
    install();
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const posix::FileDescriptor held(ends[1]);
    WatchDeadlines deadlines;
    deadlines.end = std::chrono::milliseconds(50);
    EXPECT_EQ(
        updater::watchStart(root, posix::FileDescriptor(ends[0]), {root / "bin/kelo"}, deadlines),
        WatchResult::notBegun);
}

TEST_F(StartWatch, OfTheTreeBeforeRunsItsProgramAgain) {
    release("echo broken");
    install();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t old = ::fork();
    if (old == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        const auto watcher = updater::openStartWatcher(beside / "old");
        std::_Exit(updater::relaunchWatched(watcher, root, {"PATH=/usr/bin:/bin"}) ? 0 : 1);
    }
    ::close(ends[1]);
    EXPECT_EQ(posix::readAll(ends[0], 4096), "broken\n1.0 instead of 1.1\n");
    ::close(ends[0]);
    int status = -1;
    ::waitpid(old, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(StartWatch, CoversAlsoAStagedUpdateThatTakesOver) {
    release("echo \"broken $*\"");
    stage();
    const auto started = layers::run("'" + (root / "bin/kelo").string() + "' 15");
    EXPECT_EQ(started.output, "broken 15\n1.0 instead of 1.1\n");
    EXPECT_EQ(contentsOf(root), before);
}

TEST_F(StartWatch, LetsAStagedUpdateTakeOverThatWorks) {
    stage();
    EXPECT_EQ(layers::run("'" + (root / "bin/kelo").string() + "' 15").output, "1.1\n");
    EXPECT_FALSE(fs::exists(beside));
}

} // namespace kelo::tests
