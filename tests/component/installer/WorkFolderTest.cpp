#include "updater/tree/WorkFolder.h"
#include "component/installer/Trees.h"
#include "updater/tree/TreeState.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using updater::ExchangeCalls;
using updater::TreeState;
using updater::WorkFolder;

/// Where a process would have been killed.
struct Stop : std::runtime_error {
    Stop() : std::runtime_error("stopped") {}
};

/// Throws Stop at the step with this number, counted from 0.
std::function<void()> stopAt(int number) {
    return [number, step = 0]() mutable {
        if (step++ == number)
            throw Stop();
    };
}

/// A work folder beside a tree, as other processes have left it.
class WorkFolderTest : public testing::Test {
protected:
    /// Version 1.1 is staged beside 1.0.
    void stage() const {
        writeTree(root, "1.0");
        writeTree(work / "new", "1.1");
        mark("1.1\n1.1\n");
    }
    /// Version 1.1 is installed, and 1.0 is kept in the folder with this name.
    void install(const std::string& before) const {
        writeTree(root, "1.1");
        writeTree(work / before, "1.0");
        mark("1.1\n1.1\n");
    }
    void mark(const std::string& text) const { writeFile(work / "update", text); }
    WorkFolder taken() const {
        auto folder = WorkFolder::take(root);
        if (!folder)
            throw std::runtime_error("the work folder cannot be taken");
        return std::move(*folder);
    }
    TreeState state() const { return stateOf(taken()); }
    std::string installed() const { return outputOf(root / "bin/kelo"); }

    static ExchangeCalls failing(int error) {
        ExchangeCalls calls;
        calls.exchange = [error](int, const char*, int, const char*) { return error; };
        return calls;
    }

    TreeFolder folder;
    fs::path root = folder / "home/Kelo";
    fs::path work = folder / "home/.Kelo.kelo-update";
};

} // namespace

TEST_F(WorkFolderTest, HoldsAnUpdateOnceItsMarkIsWhole) {
    stage();
    EXPECT_EQ(state(), TreeState::staged);
    for (const auto* text : {"", "1.1", "1.1\n", "1.1\n1."}) {
        mark(text);
        EXPECT_EQ(state(), TreeState::settled) << text;
    }
}

TEST_F(WorkFolderTest, WithoutTheNewProgramHoldsNoUpdate) {
    stage();
    fs::remove(work / "new/bin/kelo");
    EXPECT_EQ(state(), TreeState::settled);
}

TEST_F(WorkFolderTest, BesideATreeWithoutInformationHoldsNone) {
    stage();
    fs::remove(root / "share/kelo/Info.plist");
    EXPECT_EQ(state(), TreeState::settled);
}

TEST_F(WorkFolderTest, OfAnotherUserIsNotTouched) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder away";
    stage();
    ASSERT_EQ(::chown(work.c_str(), 65534, 65534), 0);
    EXPECT_FALSE(WorkFolder::take(root));
}

TEST_F(WorkFolderTest, TellsOfTheUpdateAsUsersKnowIt) {
    const updater::TreeUpdate update{"110", "1.1"};
    stage();
    fs::remove(work / "update");
    ASSERT_TRUE(updater::markStaged(taken().descriptor(), update));
    ASSERT_TRUE(updateOf(taken()));
    EXPECT_EQ(updateOf(taken())->version, "110");
    EXPECT_EQ(updateOf(taken())->shownVersion, "1.1");
}

TEST_F(WorkFolderTest, IsOnTrialWhileTheTreeBeforeIsThere) {
    install("old");
    EXPECT_EQ(state(), TreeState::onTrial);
    fs::remove_all(work / "old");
    EXPECT_EQ(state(), TreeState::settled);
}

// The old tree has this name from the exchange until it is renamed.
TEST_F(WorkFolderTest, IsOnTrialWhileTheTreeBeforeHasTheNameOfTheNewOne) {
    install("new");
    EXPECT_EQ(state(), TreeState::onTrial);
    EXPECT_TRUE(taken().takeTreeBack({}));
    EXPECT_EQ(installed(), "1.0\n");
}

TEST_F(WorkFolderTest, SaysWhichUpdateWasTakenBack) {
    install("old");
    EXPECT_TRUE(taken().takeTreeBack({}));
    EXPECT_EQ(state(), TreeState::takenBack);
    EXPECT_EQ(updateOf(taken())->version, "1.1");
    EXPECT_FALSE(taken().has("update")) << "it would still count as one to be tried";
}

// What was taken back lies where a staged update does.
TEST_F(WorkFolderTest, NeverOffersAgainWhatWasTakenBack) {
    for (const auto* before : {"old", "new"}) {
        for (const int step : {1, 2}) {
            fs::remove_all(folder / "home");
            install(before);
            ExchangeCalls calls;
            calls.step = stopAt(step);
            EXPECT_THROW(taken().takeTreeBack(calls), Stop);
            EXPECT_EQ(installed(), "1.0\n");
            EXPECT_EQ(state(), TreeState::takenBack) << before << ", stopped at " << step;
            EXPECT_EQ(updateOf(taken())->version, "1.1");
        }
    }
}

TEST_F(WorkFolderTest, StaysOnTrialIfTheTreesCannotBeExchanged) {
    install("old");
    EXPECT_FALSE(taken().takeTreeBack(failing(EACCES)));
    EXPECT_EQ(installed(), "1.1\n");
    EXPECT_EQ(state(), TreeState::onTrial);
}

TEST_F(WorkFolderTest, MovesNoPieceBackWithoutSayingSoFirst) {
    stage();
    taken().install(failing(EINVAL));
    ASSERT_EQ(installed(), "1.1\n");
    const Contents before = contentsOf(root);
    writeFile(work / "taking-back", "in the way of the folder with this name");
    EXPECT_FALSE(taken().takeTreeBack(failing(EINVAL)));
    EXPECT_EQ(contentsOf(root), before);
}

TEST_F(WorkFolderTest, StaysCutOffUntilAllIsBack) {
    stage();
    fs::create_directory(work / "taking-back");
    EXPECT_EQ(state(), TreeState::cutOff);
    EXPECT_FALSE(taken().endCutOff({})) << "the pieces of the tree before are nowhere";
    EXPECT_EQ(state(), TreeState::cutOff);
}

TEST_F(WorkFolderTest, StaysCutOffWhileAPieceCannotBeMoved) {
    stage();
    const Contents before = contentsOf(root);
    taken().install(failing(EINVAL));
    fs::create_directory(work / "taking-back");
    writeFile(work / "discarded", "in the way of the folder with this name");
    EXPECT_FALSE(taken().endCutOff({}));
    EXPECT_EQ(installed(), "1.0\n") << "the program goes first";
    EXPECT_EQ(state(), TreeState::cutOff);
    fs::remove(work / "discarded");
    EXPECT_TRUE(taken().endCutOff({}));
    EXPECT_EQ(contentsOf(root), before);
    EXPECT_EQ(state(), TreeState::takenBack);
}

TEST_F(WorkFolderTest, HoldsNoUpdateOfWhichPiecesAreMissing) {
    writeTree(folder / "first", "1.0");
    int ended = 0;
    for (int step = 0; step < 40; ++step) {
        fs::remove_all(folder / "home");
        stage();
        ExchangeCalls calls = failing(EINVAL);
        calls.step = stopAt(step);
        try {
            taken().install(calls);
            break;
        } catch (const Stop&) {
        }
        if (state() != TreeState::cutOff)
            continue;
        ++ended;
        EXPECT_TRUE(taken().endCutOff({}));
        EXPECT_EQ(contentsOf(root), contentsOf(folder / "first"));
        EXPECT_FALSE(updateOf(taken())) << "stopped at " << step;
    }
    EXPECT_GT(ended, 5);
}

TEST_F(WorkFolderTest, LosesItsMarksBeforeTheTreesThatTheyAreAbout) {
    for (int step = 0; step < 3; ++step) {
        fs::remove_all(folder / "home");
        stage();
        writeFile(work / "failed", "1.1\n1.1\n");
        ExchangeCalls calls;
        calls.step = stopAt(step);
        EXPECT_THROW(taken().remove(calls), Stop);
        EXPECT_FALSE(fs::exists(work / "update"));
        EXPECT_TRUE(step == 0 || !fs::exists(work / "failed"));
        EXPECT_TRUE(fs::exists(work / "new/bin/kelo"));
    }
}

} // namespace kelo::tests
