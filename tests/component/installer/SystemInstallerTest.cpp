#include "updater/install/SystemInstaller.h"
#include "base/async/Spawn.h"
#include "component/installer/Trees.h"
#include "fakes/FakeMainLoop.h"
#include "updater/error/UpdateError.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using updater::AppcastItem;
using updater::CopyOwner;
using updater::InstallKind;
using updater::SystemInstaller;
using updater::VerifiedArchive;

class WorkerOfTheTest final : public Worker {
public:
    void perform(std::function<void()> job) override { job(); }
};

AppcastItem itemFor(const std::string& fileName) {
    AppcastItem item;
    item.version = "1.1";
    item.enclosure = updater::Enclosure{*Url::parse("https://kelo.example/files/" + fileName)};
    return item;
}

Task<void> note(Task<void> task, std::string& failure, bool& ended) {
    try {
        co_await task;
    } catch (const updater::UpdateError& error) {
        failure = error.localizedDescription();
    }
    ended = true;
}

class SystemInstallerTest : public testing::Test {
protected:
    SystemInstallerTest() {
        writeTree(root, "1.0");
        writeTree(folder / "later", "1.1");
        packTree(folder / "later", "kelo-1.1", folder / "kelo-1.1.tar.zst");
        writePackage(folder / "kelo-1.1.deb", {});
    }

    std::unique_ptr<SystemInstaller> installerFor(CopyOwner owner) {
        updater::InstallerHost host;
        host.terminate = [this] { ++terminations; };
        host.environment = [this] {
            return std::vector<std::string>{"PATH=/usr/bin:/bin",
                                            "PLACE=" + folder.path().string()};
        };
        host.system = system;
        host.architecture = "amd64";
        host.opener = opener;
        return std::make_unique<SystemInstaller>(updater::InstalledCopy{owner, root}, worker, host);
    }

    VerifiedArchive verified(const std::string& fileName) const {
        updater::PrivateFolder place(folder / "downloads");
        fs::copy_file(folder / fileName, place.path() / fileName);
        posix::FileDescriptor file(::open((place.path() / fileName).c_str(), O_RDWR | O_CLOEXEC));
        const auto size = fs::file_size(folder / fileName);
        return {itemFor(fileName), std::move(place), fileName, std::move(file), size};
    }

    /// The failure's description; empty: none.
    std::string outcomeOf(Task<void> task) {
        std::string failure;
        bool ended = false;
        spawn(note(std::move(task), failure, ended));
        loop.runUntilIdle();
        EXPECT_TRUE(ended);
        return failure;
    }

    /// Has a process update itself and end. Returns once the new program has ended, and all that
    /// was started for it.
    void updateInAnotherProcess() {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t old = ::fork();
        if (old == 0) {
            ::close(ends[0]);
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[1]);
            const auto installer = installerFor(CopyOwner::user);
            const bool prepared =
                outcomeOf(installer->prepare(verified("kelo-1.1.tar.zst"))).empty() &&
                outputOf(root / "bin/kelo") == "1.0\n";
            const bool installed = outcomeOf(installer->installAndRelaunch()).empty();
            std::_Exit(prepared && installed && terminations == 1 ? 0 : 1);
        }
        ::close(ends[1]);
        // The new program has the other end open.
        char end = 0;
        while (::read(ends[0], &end, 1) > 0) {
        }
        ::close(ends[0]);
        int status = -1;
        ::waitpid(old, &status, 0);
        EXPECT_EQ(status, 0);
    }

    TreeFolder folder;
    fs::path root = folder / "home/Kelo";
    fs::path opener = folder / "opener";
    std::string system;
    fakes::FakeMainLoop loop;
    MainLoop::Installation installation{loop};
    WorkerOfTheTest worker;
    int terminations = 0;
};

} // namespace

TEST_F(SystemInstallerTest, ReplacesATreeThatTheUserOwnsByATree) {
    const auto installer = installerFor(CopyOwner::user);
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.tar.zst")), InstallKind::replaceInPlace);
    for (const auto* name : {"kelo-1.1.tar.xz", "kelo-1.1.tar.gz", "kelo-1.1.tgz"})
        EXPECT_EQ(installer->kind(itemFor(name)), InstallKind::replaceInPlace) << name;
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.deb")), InstallKind::informationalOnly);
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.zip")), InstallKind::informationalOnly);
}

TEST_F(SystemInstallerTest, HandsAPackageManagersCopyToThePackageManager) {
    const auto installer = installerFor(CopyOwner::packageManager);
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.deb")), fs::exists("/usr/bin/dpkg")
                                                            ? InstallKind::handToPackageManager
                                                            : InstallKind::informationalOnly);
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.tar.zst")), InstallKind::informationalOnly);
}

// One feed may hold the packages for several releases of a system.
TEST_F(SystemInstallerTest, HandsNoPackageOverThatIsForAnotherSystem) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "this system takes no packages";
    const auto isTaken = [&](const std::string& name) {
        return installerFor(CopyOwner::packageManager)->kind(itemFor(name)) ==
               InstallKind::handToPackageManager;
    };
    system = "deb13";
    EXPECT_TRUE(isTaken("kelo-1.1~deb13.deb"));
    EXPECT_TRUE(isTaken("kelo-1.1~deb13-amd64.deb"));
    EXPECT_FALSE(isTaken("kelo-1.1~deb12.deb"));
    EXPECT_FALSE(isTaken("kelo-1.1~deb12-amd64.deb"));
    EXPECT_FALSE(isTaken("kelo-1.1~deb1-amd64.deb"));
    EXPECT_FALSE(isTaken("kelo-1.1~deb13.1.deb"));
    EXPECT_TRUE(isTaken("kelo-1.1.deb"));
    EXPECT_TRUE(isTaken("another-1.1~deb12.deb")) << "its publisher has other names";
    system = "";
    EXPECT_TRUE(isTaken("kelo-1.1~deb12.deb"));
}

TEST_F(SystemInstallerTest, OnlyTellsOfUpdatesOfAnyOtherCopy) {
    const auto installer = installerFor(CopyOwner::unknown);
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.tar.zst")), InstallKind::informationalOnly);
    EXPECT_EQ(installer->kind(itemFor("kelo-1.1.deb")), InstallKind::informationalOnly);
    EXPECT_NE(outcomeOf(installer->prepare(verified("kelo-1.1.tar.zst"))), "");
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.0\n");
}

TEST_F(SystemInstallerTest, NamesTheFileThatStandsInTheWay) {
    EXPECT_EQ(installerFor(CopyOwner::user)->obstacle(), "");
    const SystemInstaller blocked({CopyOwner::unknown, root, "bin/notes.txt"}, worker, {});
    EXPECT_THAT(blocked.obstacle(), HasSubstr("“" + root.string() + "”"));
    EXPECT_THAT(blocked.obstacle(), HasSubstr("“bin/notes.txt”"));
}

TEST_F(SystemInstallerTest, ExchangesStartsTheNewProgramAndEndsTheOldOne) {
    writeFile(folder / "later/bin/kelo", "#!/bin/sh\n[ $# = 1 ] || echo 1.1 > $PLACE/started\n",
              0755);
    packTree(folder / "later", "kelo-1.1", folder / "kelo-1.1.tar.zst");
    updateInAnotherProcess();
    EXPECT_EQ(readFile(folder / "started"), "1.1\n");
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.1"));
}

// The new one's own is as little known to work here as the new program.
TEST_F(SystemInstallerTest, HasTheTreeBeforeWatchTheNewOnesStart) {
    const std::string watcher = "libexec/kelo/kelo-watch-start";
    fs::copy_file(KELO_WATCH_START, root / watcher);
    const fs::path list = root / "share/kelo/files.txt";
    writeFile(list, readFile(list) + watcher + "\n");
    writeFile(root / "bin/kelo", "#!/bin/sh\necho 1.0 | tee ${PLACE:+$PLACE/started}\n", 0755);
    writeFile(folder / "later/bin/kelo", "#!/bin/sh\n[ $# = 1 ] || exit 1\n", 0755);
    packTree(folder / "later", "kelo-1.1", folder / "kelo-1.1.tar.zst");
    updateInAnotherProcess();
    EXPECT_EQ(readFile(folder / "started"), "1.0\n");
    EXPECT_EQ(readFile(root / "share/kelo/Info.plist"), information("1.0"));
}

TEST_F(SystemInstallerTest, OpensTheVerifiedPackageAndGoesOn) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "no system for such packages";
    writeFile(opener, "#!/bin/sh\ncat \"$1\" > '" + (folder / "opened").string() + "'\n", 0755);
    const auto installer = installerFor(CopyOwner::packageManager);
    EXPECT_EQ(outcomeOf(installer->prepare(verified("kelo-1.1.deb"))), "");
    EXPECT_FALSE(fs::exists(folder / "opened"));
    EXPECT_EQ(outcomeOf(installer->installAndRelaunch()), "");
    EXPECT_EQ(readFile(folder / "opened"), readFile(folder / "kelo-1.1.deb"));
    EXPECT_EQ(terminations, 0);
}

TEST_F(SystemInstallerTest, OpensOnlyThePackageThatWasAnnounced) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "no system for such packages";
    writeFile(opener, "#!/bin/sh\ntouch '" + (folder / "opened").string() + "'\n", 0755);
    const std::string second = "./usr/share/kelo/Info.plist";
    for (const auto& [description, because] :
         {std::pair{PackageDescription{.version = "1.0"}, "not the one that was announced"},
          {PackageDescription{.version = "1.2"}, "not the one that was announced"},
          {PackageDescription{.name = "kelo-tools"}, "not the one that was announced"},
          {PackageDescription{.name = ""}, "not the one that was announced"},
          {PackageDescription{.architecture = "arm64"}, "not the one that was announced"},
          {PackageDescription{.more = {{.path = second, .content = information("1.0")}}},
           "not packed correctly"}}) {
        writePackage(folder / "kelo-1.1.deb", description);
        const auto installer = installerFor(CopyOwner::packageManager);
        EXPECT_THAT(outcomeOf(installer->prepare(verified("kelo-1.1.deb"))), HasSubstr(because));
        EXPECT_NE(outcomeOf(installer->installAndRelaunch()), "");
    }
    EXPECT_FALSE(fs::exists(folder / "opened"));
}

TEST_F(SystemInstallerTest, OpensNothingThatIsNoPackage) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "no system for such packages";
    const std::string whole = readFile(folder / "kelo-1.1.deb");
    for (const std::string& content :
         {std::string(), std::string("a package"), whole.substr(0, 100),
          whole.substr(0, whole.size() / 2), whole.substr(0, whole.size() - 40)}) {
        writeFile(folder / "kelo-1.1.deb", content);
        EXPECT_THAT(
            outcomeOf(installerFor(CopyOwner::packageManager)->prepare(verified("kelo-1.1.deb"))),
            HasSubstr("not packed correctly"));
    }
}

TEST_F(SystemInstallerTest, SaysWhereThePackageIsWhenNothingOpensIt) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "no system for such packages";
    for (const auto* script : {"", "#!/bin/sh\nexit 3\n"}) {
        if (*script)
            writeFile(opener, script, 0755);
        const auto installer = installerFor(CopyOwner::packageManager);
        EXPECT_EQ(outcomeOf(installer->prepare(verified("kelo-1.1.deb"))), "");
        EXPECT_THAT(outcomeOf(installer->installAndRelaunch()), HasSubstr("kelo-1.1.deb"));
    }
}

TEST_F(SystemInstallerTest, NeverOpensAPackageThatWasExchangedAfterItWasVerified) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "no system for such packages";
    writeFile(opener, "#!/bin/sh\ntouch '" + (folder / "opened").string() + "'\n", 0755);
    const auto installer = installerFor(CopyOwner::packageManager);
    auto archive = verified("kelo-1.1.deb");
    const fs::path package = archive.folder() / archive.fileName();
    EXPECT_EQ(outcomeOf(installer->prepare(std::move(archive))), "");
    fs::rename(package, folder / "away.deb");
    EXPECT_THAT(outcomeOf(installer->installAndRelaunch()), HasSubstr("changed after"));
    writeFile(package, "another one");
    EXPECT_THAT(outcomeOf(installer->installAndRelaunch()), HasSubstr("changed after"));
    fs::remove(package);
    fs::create_symlink(folder / "away.deb", package); // and to another one a moment later
    EXPECT_THAT(outcomeOf(installer->installAndRelaunch()), HasSubstr("changed after"));
    EXPECT_FALSE(fs::exists(folder / "opened"));
}

TEST_F(SystemInstallerTest, NeverOpensThePackageBeforeTheOneThatWasRefused) {
    if (!fs::exists("/usr/bin/dpkg"))
        GTEST_SKIP() << "no system for such packages";
    writeFile(opener, "#!/bin/sh\ntouch '" + (folder / "opened").string() + "'\n", 0755);
    const auto installer = installerFor(CopyOwner::packageManager);
    EXPECT_EQ(outcomeOf(installer->prepare(verified("kelo-1.1.deb"))), "");
    writePackage(folder / "kelo-1.1.deb", {.version = "1.0"});
    EXPECT_NE(outcomeOf(installer->prepare(verified("kelo-1.1.deb"))), "");
    EXPECT_NE(outcomeOf(installer->installAndRelaunch()), "");
    EXPECT_FALSE(fs::exists(folder / "opened"));
}

} // namespace kelo::tests
