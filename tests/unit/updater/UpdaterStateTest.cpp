#include "updater/UpdaterState.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <vector>

namespace kelo::test {

using updater::FileStateStore;
using updater::parseUpdaterState;
using updater::textOf;
using updater::UpdaterState;

namespace {

UpdaterState fullState() {
    UpdaterState state;
    state.lastCheck = std::chrono::sys_seconds(std::chrono::seconds(1795219200));
    state.checkCount = 7;
    state.automaticChecks = false;
    state.channels = {"beta", "nightly"};
    state.skippedVersion = "1.1=x (5)";
    state.skippedMajorVersion = "2.0";
    state.skippedMajorRelease = "2.1";
    state.rolloutNumber = 4294967295u;
    return state;
}

class StateFile : public testing::Test {
protected:
    FileStateStore store() {
        return FileStateStore(file, [this](const std::string& line) { log.push_back(line); });
    }
    void write(std::string_view text) {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    unsigned modeOf(const std::filesystem::path& path) {
        struct stat status {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }
    void expectFreshStart() {
        EXPECT_EQ(store().load(), UpdaterState());
        EXPECT_EQ(log.size(), 1u);
        store().save(fullState());
        EXPECT_EQ(store().load(), fullState());
        EXPECT_EQ(log.size(), 1u);
    }

    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "state" / "kelo" / "updater";
    std::vector<std::string> log;
};

} // namespace

TEST(UpdaterState, ComesBackAsItWas) {
    EXPECT_EQ(parseUpdaterState(textOf(fullState())), fullState());
    EXPECT_EQ(parseUpdaterState(textOf({})), UpdaterState());
}

TEST(UpdaterState, OfNewerProgramsKeepsWhatIsKnown) {
    EXPECT_EQ(parseUpdaterState(textOf(fullState()) + "mood=good\n"), fullState());
}

TEST(UpdaterState, DamagedTextIsNone) {
    for (const char* lines :
         {"last-check=\n", "last-check=-1\n", "last-check=99999999999999\n", "last-check=1x\n",
          "check-count=-1\n", "check-count=4294967296\n", "automatic-checks=maybe\n", "nonsense\n",
          "check-count=1", "\n", "rollout-number=\n"})
        EXPECT_FALSE(parseUpdaterState("kelo-updater-state 1\n" + std::string(lines))) << lines;
    EXPECT_FALSE(parseUpdaterState(""));
    EXPECT_FALSE(parseUpdaterState("another file\n"));
}

TEST_F(StateFile, MissingIsAFreshStartWithoutAWord) {
    EXPECT_EQ(store().load(), UpdaterState());
    EXPECT_TRUE(log.empty());
    EXPECT_FALSE(std::filesystem::exists(file.parent_path())) << "reading makes nothing";
}

TEST_F(StateFile, IsKeptForThisUserAlone) {
    store().save(fullState());
    EXPECT_EQ(store().load(), fullState());
    EXPECT_EQ(modeOf(file), 0600u);
    EXPECT_EQ(modeOf(file.parent_path()), 0700u);
    EXPECT_EQ(modeOf(file.parent_path().parent_path()), 0700u);
    store().save({});
    EXPECT_EQ(store().load(), UpdaterState());
    const std::filesystem::directory_iterator entries(file.parent_path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "nothing half-written is left";
}

TEST_F(StateFile, DamagedIsAFreshStartWithANote) {
    write(std::string("\0\1\2garbage", 10));
    expectFreshStart();
}

TEST_F(StateFile, EmptyIsAFreshStartWithANote) {
    write("");
    expectFreshStart();
}

TEST_F(StateFile, ThatNeverEndsIsAFreshStartWithANote) {
    write(textOf(fullState()) + std::string(100000, '\n'));
    expectFreshStart();
}

TEST_F(StateFile, LinkIsNotFollowed) {
    const auto other = folder.path() / "other";
    std::ofstream(other) << textOf(fullState());
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink(other, file);
    EXPECT_EQ(store().load(), UpdaterState());
    EXPECT_EQ(log.size(), 1u);
    store().save({});
    EXPECT_FALSE(std::filesystem::is_symlink(file));
    std::ifstream stream(other);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), textOf(fullState()));
}

TEST_F(StateFile, PipeIsNotWaitedFor) {
    std::filesystem::create_directories(file.parent_path());
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    expectFreshStart();
}

TEST_F(StateFile, ThatCannotBeWrittenIsANote) {
    std::ofstream(folder.path() / "state") << "a file where a folder should be";
    store().save(fullState());
    EXPECT_EQ(log.size(), 1u);
    EXPECT_EQ(store().load(), UpdaterState());
}

} // namespace kelo::test
