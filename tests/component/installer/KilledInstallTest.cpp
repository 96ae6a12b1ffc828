#include "component/installer/Trees.h"
#include "updater/install/TreeInstaller.h"
#include "updater/tree/CutOffExchange.h"
#include "updater/tree/InstallRecovery.h"

#include <gmock/gmock.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::ElementsAre;
using updater::ExchangeCalls;

/// Kills this process with SIGKILL at the step with this number, counted from 0.
std::function<void()> killedAt(int number) {
    return [number, step = 0]() mutable {
        if (step++ == number)
            ::kill(::getpid(), SIGKILL);
    };
}

/// Runs the action in a child process. True if it ended, false if it was killed.
bool runsToTheEnd(const std::function<void()>& action) {
    const pid_t process = ::fork();
    if (process == 0) {
        action();
        std::_Exit(0);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) || WTERMSIG(status) == SIGKILL) << "it died of something else";
    EXPECT_TRUE(!WIFEXITED(status) || WEXITSTATUS(status) == 0);
    return WIFEXITED(status);
}

enum class FileSystem { exchanges, cannotExchange };

ExchangeCalls callsFor(FileSystem fileSystem, std::function<void()> step) {
    ExchangeCalls calls;
    calls.step = std::move(step);
    if (fileSystem == FileSystem::cannotExchange)
        calls.exchange = [](int, const char*, int, const char*) { return EINVAL; };
    return calls;
}

/// An installed version 1.0 and an archive of 1.1.
class KilledInstall : public testing::TestWithParam<FileSystem> {
protected:
    KilledInstall() {
        writeTree(folder / "first", "1.0");
        writeTree(folder / "later", "1.1");
        versions["1.0\n"] = contentsOf(folder / "first");
        versions["1.1\n"] = contentsOf(folder / "later");
        packTree(folder / "later", "kelo-1.1", archive);
    }

    void installAfresh() {
        fs::remove_all(home);
        fs::create_directories(home);
        fs::copy(folder / "first", root, fs::copy_options::recursive);
    }

    void install(const std::function<void()>& step) const {
        updater::TreeInstaller installer(root, callsFor(GetParam(), step));
        installer.stage(openForReading(archive).get(), "1.1");
        installer.install();
    }

    /// Does what a start of the program does, in each program that takes the place of the one
    /// before, until one stays and is confirmed.
    void start(const std::function<void()>& step) const {
        while (true) {
            updater::TreeStart start(root, callsFor(GetParam(), step));
            if (start.replacement() == updater::TreeStart::Replacement::none)
                return start.confirm();
        }
    }

    std::string expectAProgramThatStarts() const {
        std::string version = outputOf(root / "bin/kelo");
        EXPECT_THAT(version, AnyOf("1.0\n", "1.1\n"));
        return version;
    }

    void expectWhole(const std::string& version) const {
        EXPECT_EQ(contentsOf(root), versions.at(version));
        std::vector<std::string> beside;
        for (const auto& entry : fs::directory_iterator(home))
            beside.push_back(entry.path().filename());
        EXPECT_THAT(beside, ElementsAre("Kelo"));
    }

    TreeFolder folder;
    fs::path home = folder / "home";
    fs::path root = home / "Kelo";
    fs::path archive = folder / "kelo-1.1.tar.zst";
    std::map<std::string, Contents> versions;
};

} // namespace

TEST_P(KilledInstall, LeavesAProgramThatStartsWhereverItWasKilled) {
    bool ended = false;
    int kills = 0;
    int takeOvers = 0;
    for (int number = 0; !ended; ++number) {
        installAfresh();
        ended = runsToTheEnd([&] { install(killedAt(number)); });
        const std::string version = expectAProgramThatStarts();
        EXPECT_TRUE(!ended || version == "1.1\n");
        const bool staged = version == "1.0\n" && fs::exists(home / ".Kelo.kelo-update/update") &&
                            !fs::exists(home / ".Kelo.kelo-update/previous");
        start([] {});
        EXPECT_EQ(expectAProgramThatStarts(), staged ? "1.1\n" : version);
        expectWhole(expectAProgramThatStarts());
        ASSERT_FALSE(HasFailure()) << "killed at step " << number;
        kills += ended ? 0 : 1;
        takeOvers += staged ? 1 : 0;
    }
    EXPECT_GE(takeOvers, 1);
    EXPECT_GE(kills, GetParam() == FileSystem::exchanges ? 6 : 20);
}

// The command, which is a file of "bin" and so always there, does this before it runs the program.
TEST_P(KilledInstall, LeavesAProgramToTheCommandWhereverItWasKilled) {
    bool ended = false;
    int missing = 0;
    for (int number = 0; !ended; ++number) {
        installAfresh();
        ended = runsToTheEnd([&] { install(killedAt(number)); });
        const std::string version = expectAProgramThatStarts();
        missing += fs::exists(root / "libexec/kelo/kelo") ? 0 : 1;
        updater::undoExchangeThatWasCutOff(root, callsFor(GetParam(), [] {}));
        EXPECT_EQ(outputOf(root / "libexec/kelo/kelo"), version);
        start([] {});
        expectWhole(expectAProgramThatStarts());
        ASSERT_FALSE(HasFailure()) << "killed at step " << number;
    }
    EXPECT_EQ(missing > 0, GetParam() == FileSystem::cannotExchange);
}

TEST_P(KilledInstall, LeavesAProgramThoughTheCommandIsKilledToo) {
    bool ended = false;
    for (int number = 0; !ended; ++number) {
        bool undone = false;
        for (int undoNumber = 0; !undone; ++undoNumber) {
            installAfresh();
            ended = runsToTheEnd([&] { install(killedAt(number)); });
            const auto undo = [&](const std::function<void()>& step) {
                updater::undoExchangeThatWasCutOff(root, callsFor(GetParam(), step));
            };
            undone = runsToTheEnd([&] { undo(killedAt(undoNumber)); });
            undo([] {});
            EXPECT_EQ(outputOf(root / "libexec/kelo/kelo"), expectAProgramThatStarts());
            start([] {});
            expectWhole(expectAProgramThatStarts());
            ASSERT_FALSE(HasFailure()) << "killed at " << number << ", then at " << undoNumber;
        }
    }
}

TEST_P(KilledInstall, IsClearedUpHoweverOftenTheStartIsKilledToo) {
    bool ended = false;
    for (int number = 0; !ended; ++number) {
        bool started = false;
        for (int startNumber = 0; !started; ++startNumber) {
            installAfresh();
            ended = runsToTheEnd([&] { install(killedAt(number)); });
            started = runsToTheEnd([&] { start(killedAt(startNumber)); });
            expectAProgramThatStarts();
            start([] {});
            expectWhole(expectAProgramThatStarts());
            ASSERT_FALSE(HasFailure()) << "killed at " << number << ", then at " << startNumber;
        }
    }
}

TEST_P(KilledInstall, TheOldTreeIsKeptUntilTheNewProgramHasStarted) {
    installAfresh();
    ASSERT_TRUE(runsToTheEnd([&] { install([] {}); }));
    bool kept = false;
    for (const auto& entry : fs::recursive_directory_iterator(home))
        kept |= entry.path().filename() == "kelo" && entry.is_regular_file() &&
                readFile(entry.path()) == versions.at("1.0\n").at("bin/kelo");
    EXPECT_TRUE(kept);
    start([] {});
    expectWhole("1.1\n");
}

TEST_P(KilledInstall, AStartBesideALivingInstallerTouchesNothing) {
    installAfresh();
    updater::TreeInstaller installer(root, callsFor(GetParam(), [] {}));
    installer.stage(openForReading(archive).get(), "1.1");
    ASSERT_TRUE(runsToTheEnd([&] { start([] {}); }));
    installer.install();
    EXPECT_EQ(expectAProgramThatStarts(), "1.1\n");
}

TEST_P(KilledInstall, IsTakenBackByTheSecondStartThatWasNotConfirmed) {
    installAfresh();
    install([] {});
    ASSERT_TRUE(runsToTheEnd([&] {
        EXPECT_EQ(updater::TreeStart(root, callsFor(GetParam(), [] {})).replacement(),
                  updater::TreeStart::Replacement::none);
    }));
    const updater::TreeStart second(root, callsFor(GetParam(), [] {}));
    EXPECT_EQ(second.replacement(), updater::TreeStart::Replacement::byTreeBefore);
    EXPECT_EQ(contentsOf(root), versions.at("1.0\n"));
    updater::TreeStart old(root, callsFor(GetParam(), [] {}));
    EXPECT_EQ(old.replacement(), updater::TreeStart::Replacement::none);
    ASSERT_TRUE(old.failedUpdate());
    EXPECT_EQ(old.failedUpdate()->shownVersion, "1.1");
    old.confirm();
    expectWhole("1.0\n");
}

TEST_P(KilledInstall, IsTakenBackWholeHoweverOftenThatIsKilledToo) {
    bool ended = false;
    int kills = 0;
    for (int number = 0; !ended; ++number) {
        installAfresh();
        install([] {});
        ASSERT_TRUE(runsToTheEnd([&] { updater::TreeStart(root, callsFor(GetParam(), [] {})); }));
        ended =
            runsToTheEnd([&] { updater::TreeStart(root, callsFor(GetParam(), killedAt(number))); });
        // Of the two programs only the old one is known to start, so it goes first.
        EXPECT_TRUE(contentsOf(root) == versions.at("1.1\n") ||
                    expectAProgramThatStarts() == "1.0\n");
        start([] {});
        expectWhole("1.0\n");
        ASSERT_FALSE(HasFailure()) << "killed at step " << number;
        kills += ended ? 0 : 1;
    }
    EXPECT_GE(kills, GetParam() == FileSystem::exchanges ? 3 : 10);
}

TEST_P(KilledInstall, TheProgramBeforeRunsOnceItsWayBackIsEnded) {
    installAfresh();
    install([] {});
    ASSERT_TRUE(runsToTheEnd([&] { updater::TreeStart(root, callsFor(GetParam(), [] {})); }));
    const bool isPieceByPiece = GetParam() == FileSystem::cannotExchange;
    ASSERT_FALSE(
        runsToTheEnd([&] { updater::TreeStart(root, callsFor(GetParam(), killedAt(1))); }));
    const updater::TreeStart next(root, callsFor(GetParam(), [] {}));
    EXPECT_EQ(next.replacement(), isPieceByPiece ? updater::TreeStart::Replacement::byTreeBefore
                                                 : updater::TreeStart::Replacement::none);
    EXPECT_EQ(contentsOf(root), versions.at("1.0\n"));
}

TEST_P(KilledInstall, IsEndedBeforeAnotherUpdateIsStaged) {
    bool ended = false;
    for (int number = 0; !ended; ++number) {
        installAfresh();
        ended = runsToTheEnd([&] { install(killedAt(number)); });
        const std::string version = expectAProgramThatStarts();
        updater::TreeInstaller installer(root, callsFor(GetParam(), [] {}));
        installer.stage(openForReading(archive).get(), "1.1");
        EXPECT_EQ(contentsOf(root), versions.at(version)) << "killed at step " << number;
    }
}

TEST_P(KilledInstall, AStartBesideTheOneOnTrialTouchesNothing) {
    installAfresh();
    install([] {});
    updater::TreeStart first(root, callsFor(GetParam(), [] {}));
    ASSERT_TRUE(runsToTheEnd([&] {
        updater::TreeStart second(root, callsFor(GetParam(), [] {}));
        EXPECT_EQ(second.replacement(), updater::TreeStart::Replacement::none);
        second.setAside();
    }));
    EXPECT_EQ(expectAProgramThatStarts(), "1.1\n");
    EXPECT_TRUE(fs::exists(home / ".Kelo.kelo-update/starting")) << "the first one's trial goes on";
    first.confirm();
    expectWhole("1.1\n");
}

TEST_P(KilledInstall, AStartThatWasSetAsideDoesNotCount) {
    installAfresh();
    install([] {});
    for (int time = 0; time < 3; ++time) {
        updater::TreeStart help(root, callsFor(GetParam(), [] {}));
        EXPECT_EQ(help.replacement(), updater::TreeStart::Replacement::none);
        EXPECT_FALSE(fs::exists(home / ".Kelo.kelo-update/set-aside")) << "this one is on trial";
        help.setAside();
        EXPECT_TRUE(fs::exists(home / ".Kelo.kelo-update/set-aside"));
    }
    start([] {});
    expectWhole("1.1\n");
}

INSTANTIATE_TEST_SUITE_P(OnDisk, KilledInstall,
                         testing::Values(FileSystem::exchanges, FileSystem::cannotExchange),
                         [](const auto& info) {
                             return info.param == FileSystem::exchanges ? "InOneStep"
                                                                        : "PieceByPiece";
                         });

} // namespace kelo::tests
