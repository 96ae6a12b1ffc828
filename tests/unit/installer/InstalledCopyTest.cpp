#include "updater/tree/InstalledCopy.h"
#include "component/installer/Trees.h"

#include <gmock/gmock.h>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using updater::CopyOwner;
using updater::findInstalledCopy;
using updater::foreignFile;

class InstalledCopy : public testing::Test {
protected:
    InstalledCopy() { writeTree(root, "1.0"); }

    CopyOwner owner() const { return findInstalledCopy(root / "bin/kelo", home.path()).owner; }

    TreeFolder home;
    fs::path root = home / "Apps/Kelo";
};

} // namespace

TEST_F(InstalledCopy, OfATreeBelowTheHomeIsTheUsers) {
    EXPECT_EQ(owner(), CopyOwner::user);
    EXPECT_EQ(findInstalledCopy(root / "bin/kelo", home.path()).root, root);
    EXPECT_EQ(findInstalledCopy(root / "bin/kelo", home.path()).strayFile, "");
}

TEST_F(InstalledCopy, ThatSharesItsFolderIsNotTheUpdatersToReplace) {
    writeFile(root / "bin/other-program", "");
    EXPECT_EQ(owner(), CopyOwner::unknown);
    EXPECT_EQ(foreignFile(root), "bin/other-program");
    EXPECT_EQ(findInstalledCopy(root / "bin/kelo", home.path()).strayFile, "bin/other-program");
}

TEST_F(InstalledCopy, WithAHiddenFileOfTheUsersIsNotTheUpdatersToReplace) {
    writeFile(root / ".notes", "mine");
    EXPECT_EQ(owner(), CopyOwner::unknown);
}

TEST_F(InstalledCopy, WithoutAListOfItsFilesIsNotTheUpdatersToReplace) {
    fs::remove(root / updater::treeListPath);
    EXPECT_EQ(owner(), CopyOwner::unknown);
    EXPECT_EQ(findInstalledCopy(root / "bin/kelo", home.path()).strayFile, "");
}

TEST_F(InstalledCopy, ThatLacksAFileCanStillBeReplaced) {
    fs::remove(root / "share/doc/first.txt");
    EXPECT_EQ(owner(), CopyOwner::user);
}

TEST_F(InstalledCopy, OutsideTheHomeIsNobodysWeKnow) {
    const TreeFolder otherHome;
    EXPECT_EQ(findInstalledCopy(root / "bin/kelo", otherHome.path()).owner, CopyOwner::unknown);
    EXPECT_EQ(findInstalledCopy(root / "bin/kelo", "").owner, CopyOwner::unknown);
    EXPECT_EQ(findInstalledCopy("/opt/kelo/bin/kelo", home.path()).owner, CopyOwner::unknown);
}

TEST_F(InstalledCopy, InTheHomeItselfIsNotTheUpdatersToReplace) {
    writeTree(home.path(), "1.0");
    EXPECT_EQ(findInstalledCopy(home / "bin/kelo", home.path()).owner, CopyOwner::unknown);
}

TEST_F(InstalledCopy, InABuildTreeIsNobodysWeKnow) {
    EXPECT_EQ(findInstalledCopy(root / "kelo", home.path()).owner, CopyOwner::unknown);
}

TEST_F(InstalledCopy, BelowUsrIsThePackageManagers) {
    EXPECT_EQ(findInstalledCopy("/usr/bin/kelo", home.path()).owner, CopyOwner::packageManager);
    EXPECT_EQ(findInstalledCopy("/usr/local/bin/kelo", home.path()).owner, CopyOwner::unknown);
}

} // namespace kelo::tests
