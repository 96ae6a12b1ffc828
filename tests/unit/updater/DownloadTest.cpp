#include "updater/archive/Download.h"

#include "unit/updater/UpdaterFixture.h"

#include <gmock/gmock.h>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

namespace kelo::test {

using testing::IsEmpty;
using testing::SizeIs;
using updater::fileNameOf;
using updater::PrivateFolder;
using updater::UpdateChoice;
using updater::UpdateError;

namespace {

struct stat statusOf(const std::filesystem::path& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

std::string nameOf(const std::string& url) {
    return fileNameOf(*Url::parse(url));
}

} // namespace

using Download = UpdaterFixture;

TEST_F(Download, IsForThisUserAlone) {
    check();
    choose(UpdateChoice::install);
    ASSERT_TRUE(installer.kept);
    const auto file = installer.kept->folder() / installer.kept->fileName();
    EXPECT_EQ(statusOf(file).st_mode, S_IFREG | 0600u);
    EXPECT_EQ(statusOf(installer.kept->folder()).st_mode, S_IFDIR | 0700u);
    EXPECT_EQ(statusOf(folder.path() / "updates").st_mode, S_IFDIR | 0700u);
}

TEST_F(Download, HandsOnTheDescriptorOfWhatItVerified) {
    check();
    choose(UpdateChoice::install);
    ASSERT_TRUE(installer.kept);
    struct stat open {};
    ASSERT_EQ(fstat(installer.kept->descriptor(), &open), 0);
    const auto file = statusOf(installer.kept->folder() / installer.kept->fileName());
    EXPECT_EQ(open.st_ino, file.st_ino);
    EXPECT_EQ(installer.kept->size(), archive.size());
}

TEST_F(Download, GoesWithItsArchive) {
    check();
    choose(UpdateChoice::install);
    EXPECT_THAT(leftovers(), SizeIs(1));
    installer.kept.reset();
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(Download, OfAFormerRunIsRemovedAtTheStart) {
    const auto left = folder.path() / "updates" / "download-aaaaaa";
    std::filesystem::create_directories(left / "inner");
    std::ofstream(left / "kelo.tar.zst") << "half";
    start();
    EXPECT_FALSE(std::filesystem::exists(left));
}

TEST_F(Download, OfALivingProcessIsLeftAlone) {
    const PrivateFolder living(folder.path() / "updates");
    start();
    EXPECT_TRUE(std::filesystem::exists(living.path()));
}

TEST_F(Download, NothingButItsOwnIsRemovedAtTheStart) {
    const auto updates = folder.path() / "updates";
    const auto treasure = folder.path() / "treasure";
    std::filesystem::create_directories(treasure);
    std::filesystem::create_directories(updates / "something");
    std::ofstream(updates / "download-file") << "no folder";
    std::filesystem::create_directory_symlink(treasure, updates / "download-link");
    start();
    EXPECT_TRUE(std::filesystem::exists(treasure));
    EXPECT_THAT(leftovers(), SizeIs(3));
}

TEST_F(Download, FolderBehindALinkIsNotSwept) {
    const auto elsewhere = folder.path() / "elsewhere" / "download-aaaaaa";
    std::filesystem::create_directories(elsewhere);
    std::filesystem::create_directory_symlink(folder.path() / "elsewhere",
                                              folder.path() / "updates");
    start();
    EXPECT_TRUE(std::filesystem::exists(elsewhere));
}

TEST(PrivateFolder, IsNotMadeBehindALink) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "real");
    std::filesystem::create_directory_symlink(folder.path() / "real", folder.path() / "updates");
    EXPECT_THROW(PrivateFolder(folder.path() / "updates"), UpdateError);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "real"));
}

TEST(PrivateFolder, IsNotMadeWhereAFileStands) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "updates") << "x";
    EXPECT_THROW(PrivateFolder(folder.path() / "updates"), UpdateError);
    EXPECT_THROW(PrivateFolder(folder.path() / "updates" / "inner"), UpdateError);
}

TEST(PrivateFolder, MovesAndIsRemovedOnce) {
    const TemporaryFolder folder;
    std::filesystem::path path;
    {
        PrivateFolder first(folder.path() / "updates");
        path = first.path();
        PrivateFolder second(std::move(first));
        EXPECT_EQ(second.path(), path);
        PrivateFolder third(folder.path() / "updates");
        third = std::move(second);
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "updates"));
}

TEST(ArchiveFileName, IsTheLastComponent) {
    EXPECT_EQ(nameOf("https://e.com/a/kelo-1.1.tar.zst?x=/y.deb#z"), "kelo-1.1.tar.zst");
    EXPECT_EQ(nameOf("https://e.com/kelo_1.1~rc1+b2_amd64.deb"), "kelo_1.1~rc1+b2_amd64.deb");
}

TEST(ArchiveFileName, IsHarmless) {
    EXPECT_EQ(nameOf("https://e.com/"), "update");
    EXPECT_EQ(nameOf("https://e.com"), "update");
    EXPECT_EQ(nameOf("https://e.com/.."), "_.");
    EXPECT_EQ(nameOf("https://e.com/.profile"), "_profile");
    EXPECT_EQ(nameOf("https://e.com/a%2F..%2Fb.deb"), "b.deb");
    EXPECT_EQ(nameOf("https://e.com/%24(x)%20%0A.deb"), "__x___.deb");
    const std::string longName = nameOf("https://e.com/" + std::string(500, 'a') + ".tar.zst");
    EXPECT_EQ(longName.size(), 128u);
    EXPECT_TRUE(longName.ends_with(".tar.zst"));
}

} // namespace kelo::test
