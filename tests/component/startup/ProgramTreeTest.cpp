#include "component/installer/Trees.h"
#include "layers/Command.h"
#include "updater/install/TreeInstaller.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;

/// A tree whose program starts like ours.
class ProgramTree : public testing::Test {
protected:
    ProgramTree() {
        writeTree(root, "1.0");
        place(root / "bin/kelo");
    }

    static void place(const fs::path& program) {
        fs::copy_file(KELO_TREE_PROGRAM, program, fs::copy_options::overwrite_existing);
    }

    std::string runFor(int seconds) const {
        return layers::run("'" + (root / "bin/kelo").string() + "' " + std::to_string(seconds))
            .output;
    }

    TreeFolder folder;
    fs::path root = folder / "home/Kelo";
    fs::path beside = folder / "home/.Kelo.kelo-update";
};

} // namespace

TEST_F(ProgramTree, IsWhereTheProgramFindsItsInformationWhereverItWasMoved) {
    EXPECT_EQ(runFor(0), "1.0\n");
    fs::create_directories(folder / "elsewhere");
    fs::rename(root, folder / "elsewhere/K");
    root = folder / "elsewhere/K";
    EXPECT_EQ(runFor(0), "1.0\n");
    writeFile(root / "share/kelo/Info.plist", "damaged");
    EXPECT_EQ(runFor(0), "");
}

TEST_F(ProgramTree, OfTheVersionBeforeIsRemovedOnceTheProgramHasRunForAWhile) {
    writeTree(beside / "old", "0.9");
    layers::run("'" + (root / "bin/kelo").string() + "' 5 crash");
    EXPECT_TRUE(fs::exists(beside / "old/bin/kelo"));
    EXPECT_EQ(runFor(15), "1.0\n");
    EXPECT_FALSE(fs::exists(beside));
}

TEST_F(ProgramTree, IsWholeAgainAtTheStartAfterAnExchangeWasCutOff) {
    const Contents before = contentsOf(root);
    writeTree(beside / "new", "1.1");
    fs::create_directories(beside / "previous");
    fs::create_directories(beside / "added");
    fs::rename(root / "share", beside / "previous/share");
    fs::rename(beside / "new/share", root / "share");
    EXPECT_EQ(runFor(0), "1.0\n");
    EXPECT_EQ(contentsOf(root), before);
}

} // namespace kelo::tests
