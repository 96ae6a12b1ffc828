#include "updater/install/TreeInstaller.h"
#include "component/installer/PrivateMount.h"
#include "component/installer/Trees.h"
#include "updater/error/UpdateError.h"
#include "updater/tree/InstallRecovery.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <cerrno>
#include <iostream>
#include <utility>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using updater::ExchangeCalls;
using updater::TreeInstaller;
using updater::UpdateError;

/// An installed version 1.0, and archives of later versions.
class TreeInstallerTest : public testing::Test {
protected:
    TreeInstallerTest() {
        writeTree(root, "1.0");
        pack("1.1");
    }

    void pack(const std::string& version) {
        writeTree(folder / version, version);
        packTree(folder / version, "kelo-" + version, archive);
    }

    static std::string failureOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const UpdateError& error) {
            return error.localizedDescription();
        }
        return "";
    }

    void stage(TreeInstaller& installer, const std::string& version = "1.1") const {
        installer.stage(openForReading(archive).get(), version);
    }

    void expectNothingHappened() const {
        EXPECT_EQ(outputOf(root / "bin/kelo"), "1.0\n");
        EXPECT_EQ(contentsOf(root), first);
        std::vector<std::string> beside;
        for (const auto& entry : fs::directory_iterator(home))
            beside.push_back(entry.path().filename());
        EXPECT_THAT(beside, ElementsAre("Kelo"));
    }

    TreeFolder folder;
    fs::path home = folder / "home";
    fs::path root = home / "Kelo";
    fs::path archive = folder / "kelo-1.1.tar.zst";
    Contents first = [this] {
        writeTree(folder / "first", "1.0");
        return contentsOf(folder / "first");
    }();
};

} // namespace

TEST_F(TreeInstallerTest, StagingTouchesNothingOfTheInstalledTree) {
    TreeInstaller installer(root);
    stage(installer);
    EXPECT_EQ(contentsOf(root), first);
    installer.install();
    EXPECT_EQ(contentsOf(root), contentsOf(folder / "1.1"));
    EXPECT_EQ(outputOf(installer.program()), "1.1\n");
}

TEST_F(TreeInstallerTest, WhatWasStagedTakesTheTreesPlaceAtTheNextStart) {
    {
        TreeInstaller installer(root);
        stage(installer);
        EXPECT_EQ(updater::TreeStart(root).replacement(), updater::TreeStart::Replacement::none)
            << "the process that staged it still runs";
    }
    EXPECT_EQ(contentsOf(root), first);
    EXPECT_EQ(updater::TreeStart(root).replacement(), updater::TreeStart::Replacement::byUpdate);
    EXPECT_EQ(contentsOf(root), contentsOf(folder / "1.1"));
}

TEST_F(TreeInstallerTest, WhatWasStagedWaitsWhileAFileOfTheUserIsInTheTree) {
    {
        TreeInstaller installer(root);
        stage(installer);
    }
    writeFile(root / "notes.txt", "mine");
    updater::TreeStart start(root);
    EXPECT_EQ(start.replacement(), updater::TreeStart::Replacement::none);
    start.confirm();
    EXPECT_EQ(readFile(root / "notes.txt"), "mine");
    fs::remove(root / "notes.txt");
    EXPECT_EQ(updater::TreeStart(root).replacement(), updater::TreeStart::Replacement::byUpdate);
}

TEST_F(TreeInstallerTest, WhatWasStagedNeverTakesThePlaceOfANewerTree) {
    {
        TreeInstaller installer(root);
        stage(installer);
    }
    fs::remove_all(root);
    writeTree(root, "1.2");
    updater::TreeStart start(root);
    EXPECT_EQ(start.replacement(), updater::TreeStart::Replacement::none);
    start.confirm();
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.2\n");
    EXPECT_FALSE(fs::exists(home / ".Kelo.kelo-update"));
}

TEST_F(TreeInstallerTest, StagingAgainTakesThePlaceOfWhatWasStaged) {
    TreeInstaller installer(root);
    stage(installer);
    pack("1.2");
    stage(installer, "1.2");
    installer.install();
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.2\n");
}

TEST_F(TreeInstallerTest, AnotherVersionThanTheFeedAnnouncedIsRefused) {
    TreeInstaller installer(root);
    EXPECT_THAT(failureOf([&] { stage(installer, "1.2"); }), HasSubstr("not packed correctly"));
    expectNothingHappened();
}

TEST_F(TreeInstallerTest, ATreeWithoutInformationIsRefused) {
    writeArchive(archive,
                 {{.path = "kelo/bin/kelo", .permissions = 0755, .content = "#!/bin/sh\n"}});
    TreeInstaller installer(root);
    EXPECT_THAT(failureOf([&] { stage(installer); }), HasSubstr("not packed correctly"));
    expectNothingHappened();
}

TEST_F(TreeInstallerTest, AProgramThatDoesNotStartHereIsRefused) {
    for (const auto& [content, permissions] :
         {std::pair<std::string, mode_t>{"#!/bin/sh\nexit 1\n", 0755},
          {"#!/nowhere/such-loader\n", 0755},
          {"#!/bin/sh\n", 0644}}) {
        writeArchive(archive,
                     {{.path = "kelo/bin/kelo", .permissions = permissions, .content = content},
                      {.path = "kelo/share/kelo/Info.plist", .content = information("1.1")}});
        TreeInstaller installer(root);
        EXPECT_THAT(failureOf([&] { stage(installer); }),
                    HasSubstr("does not start on this computer"));
        expectNothingHappened();
    }
}

TEST_F(TreeInstallerTest, ACommandWithoutAProgramThatStartsHereIsRefused) {
    writeArchive(
        archive,
        {{.path = "kelo/bin/kelo", .permissions = 0755, .content = "#!/bin/sh\n"},
         {.path = "kelo/libexec/kelo/kelo", .permissions = 0755, .content = "#!/bin/sh\nexit 1\n"},
         {.path = "kelo/share/kelo/Info.plist", .content = information("1.1")}});
    TreeInstaller installer(root);
    EXPECT_THAT(failureOf([&] { stage(installer); }), HasSubstr("does not start on this computer"));
    expectNothingHappened();
}

TEST_F(TreeInstallerTest, AFileThatTheUserPutThereMeanwhileIsNeverLost) {
    TreeInstaller installer(root);
    stage(installer);
    writeFile(root / "notes.txt", "mine");
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("“notes.txt”"));
    EXPECT_EQ(readFile(root / "notes.txt"), "mine");
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.0\n");
}

TEST_F(TreeInstallerTest, ATreeThatWasMovedMeanwhileIsLeftWhereItIs) {
    TreeInstaller installer(root);
    stage(installer);
    fs::rename(root, home / "Elsewhere");
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("was moved or replaced"));
    EXPECT_EQ(contentsOf(home / "Elsewhere"), first);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(TreeInstallerTest, ATreeInAnotherFolderOfTheSameNameIsLeftAlone) {
    TreeInstaller installer(root);
    stage(installer);
    fs::rename(home, folder / "before");
    fs::create_directory(home);
    fs::rename(folder / "before/Kelo", root);
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("was moved or replaced"));
    EXPECT_EQ(contentsOf(root), first);
}

TEST_F(TreeInstallerTest, ATreeThatSomebodyElseExchangedMeanwhileIsLeftAlone) {
    TreeInstaller installer(root);
    stage(installer);
    fs::rename(root, folder / "away");
    writeTree(root, "9.9");
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("was moved or replaced"));
    EXPECT_EQ(outputOf(root / "bin/kelo"), "9.9\n");
}

TEST_F(TreeInstallerTest, ALinkInTheTreesPlaceIsNotFollowed) {
    fs::rename(root, folder / "away");
    fs::create_directory_symlink(folder / "away", root);
    TreeInstaller installer(root);
    EXPECT_THAT(failureOf([&] { stage(installer); }), HasSubstr("was moved or replaced"));
    EXPECT_EQ(contentsOf(folder / "away"), first);
}

TEST_F(TreeInstallerTest, TheFoldersPermissionsStayTheUsers) {
    ::chmod(root.c_str(), 0700);
    TreeInstaller installer(root);
    stage(installer);
    installer.install();
    struct stat status {};
    ::stat(root.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(TreeInstallerTest, AFolderThatItsUserCannotWriteToCanBeUpdatedAgain) {
    ::chmod(root.c_str(), 0550);
    TreeInstaller installer(root);
    stage(installer);
    installer.install();
    struct stat status {};
    ::stat(root.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0750U);
}

TEST_F(TreeInstallerTest, WhatAProcessBeforeHasStagedGivesWay) {
    {
        TreeInstaller installer(root);
        stage(installer);
    }
    pack("1.2");
    TreeInstaller installer(root);
    stage(installer, "1.2");
    installer.install();
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.2\n");
}

TEST_F(TreeInstallerTest, NothingIsInstalledThatWasNotStaged) {
    TreeInstaller installer(root);
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("not packed correctly"));
    expectNothingHappened();
}

TEST_F(TreeInstallerTest, TheOldTreeIsNotGivenUpForAThirdBeforeTheNewOneHasStarted) {
    TreeInstaller installer(root);
    stage(installer);
    installer.install();
    EXPECT_THAT(failureOf([&] { stage(installer); }), HasSubstr("in place already"));
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.1\n");
}

TEST_F(TreeInstallerTest, TwoInstallersDoNotGetInEachOthersWay) {
    TreeInstaller one(root);
    stage(one);
    {
        TreeInstaller other(root);
        EXPECT_THAT(failureOf([&] { stage(other); }), HasSubstr("Another Kelo is installing"));
    }
    one.install();
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.1\n");
}

TEST_F(TreeInstallerTest, PiecesAreTakenBackWhenTheLastOneCannotBePlaced) {
    const fs::path staged = home / updater::workFolderName(root) / "new/bin/kelo";
    ExchangeCalls calls;
    calls.exchange = [](int, const char*, int, const char*) { return ENOSYS; };
    calls.step = [&, steps = 0]() mutable {
        if (fs::exists(home / updater::workFolderName(root) / "previous/share") && steps++ == 3)
            fs::remove(staged);
    };
    TreeInstaller installer(root, calls);
    stage(installer);
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("Your version keeps working"));
    EXPECT_FALSE(fs::exists(staged));
    EXPECT_EQ(outputOf(root / "bin/kelo"), "1.0\n");
    EXPECT_EQ(contentsOf(root), first);
}

TEST_F(TreeInstallerTest, PiecesAreTakenBackWhenOneBeforeTheProgramCannotBePlaced) {
    const fs::path kept = home / updater::workFolderName(root) / "previous/share";
    ExchangeCalls calls;
    calls.exchange = [](int, const char*, int, const char*) { return EOPNOTSUPP; };
    bool isInTheWay = false;
    calls.step = [&] {
        if (fs::exists(kept) && !std::exchange(isInTheWay, true))
            writeFile(root / "share/another", "in the way");
    };
    TreeInstaller installer(root, calls);
    stage(installer);
    EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("Your version keeps working"));
    EXPECT_TRUE(isInTheWay);
    EXPECT_EQ(contentsOf(root), first);
}

TEST_F(TreeInstallerTest, AFailedExchangeLeavesEverythingAndSaysWhatToDo) {
    ExchangeCalls calls;
    calls.exchange = [](int, const char*, int, const char*) { return EACCES; };
    {
        TreeInstaller installer(root, calls);
        stage(installer);
        EXPECT_THAT(failureOf([&] { installer.install(); }), HasSubstr("Move that folder"));
    }
    EXPECT_EQ(contentsOf(root), first);
}

TEST_F(TreeInstallerTest, AFullDiskIsSaidPlainlyAndNothingIsLost) {
    const PrivateMount mount{home / "mounted", "64k"};
    const auto result = inside(mount, [&] {
        const fs::path tree = mount.place / "Kelo";
        writeTree(tree, "1.0");
        writeArchive(archive, {{.path = "kelo/bin/kelo", .content = std::string(200000, 'x')}});
        TreeInstaller installer(tree);
        const std::string failure = failureOf([&] { stage(installer); });
        std::cerr << failure << "\n";
        return failure.find("not enough room") != std::string::npos && contentsOf(tree) == first &&
               !fs::exists(mount.place / ".Kelo.kelo-update");
    });
    if (result == InsideResult::notPossibleHere)
        GTEST_SKIP() << "needs a file system of its own";
    EXPECT_EQ(result, InsideResult::held);
}

TEST_F(TreeInstallerTest, AReadOnlyTargetIsSaidPlainlyAndNothingIsLost) {
    const PrivateMount mount{home / "mounted", "1m"};
    const auto result = inside(mount, [&] {
        const fs::path tree = mount.place / "Kelo";
        writeTree(tree, "1.0");
        mount.makeReadOnly();
        TreeInstaller installer(tree);
        const std::string failure = failureOf([&] { stage(installer); });
        std::cerr << failure << "\n";
        return failure.find("cannot be written beside the folder") != std::string::npos &&
               contentsOf(tree) == first;
    });
    if (result == InsideResult::notPossibleHere)
        GTEST_SKIP() << "needs a file system of its own";
    EXPECT_EQ(result, InsideResult::held);
}

} // namespace kelo::tests
