#include "linux/desktop/PosixFileSystem.h"

#include "component/LogReader.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace kelo::desktop {
namespace {

namespace fs = std::filesystem;

struct PosixFileSystemTest : testing::Test {
    static std::string content(const fs::path& file) {
        std::ifstream stream(file);
        return (std::ostringstream() << stream.rdbuf()).str();
    }

    PosixFileSystem files;
    const test::TemporaryFolder folder;
    const std::string path = (folder / "file").string();
};

TEST_F(PosixFileSystemTest, MissingFileIsNotOpenedAndNotCreated) {
    EXPECT_EQ(files.openForWriting(path), nullptr);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(PosixFileSystemTest, WholeFileIsCreatedForItsOwnerAlone) {
    const auto umaskBefore = umask(0);
    EXPECT_TRUE(files.writeWholeFile(path, bytesOf("one\n")));
    umask(umaskBefore);
    EXPECT_EQ(content(path), "one\n");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
}

TEST_F(PosixFileSystemTest, WholeFileReplacesLongerContent) {
    std::ofstream(path) << "something longer";
    EXPECT_TRUE(files.writeWholeFile(path, bytesOf("one")));
    EXPECT_EQ(content(path), "one");
}

TEST_F(PosixFileSystemTest, OpenedFileIsNotTruncatedAndAppendedToAtItsEnd) {
    std::ofstream(path) << "one\n";
    {
        const auto file = files.openForWriting(path);
        ASSERT_TRUE(file);
        file->seekToEnd();
        file->write(bytesOf("two\n"));
    }
    EXPECT_EQ(content(path), "one\ntwo\n");
}

TEST_F(PosixFileSystemTest, SymbolicLinkIsNotFollowed) {
    const auto target = folder / "target";
    std::ofstream(target) << "precious";
    fs::create_symlink(target, path);
    EXPECT_EQ(files.openForWriting(path), nullptr);
    EXPECT_FALSE(files.writeWholeFile(path, bytesOf("x")));
    EXPECT_EQ(content(target), "precious");
}

TEST_F(PosixFileSystemTest, DanglingSymbolicLinkCreatesNothing) {
    const auto target = folder / "target";
    fs::create_symlink(target, path);
    EXPECT_FALSE(files.writeWholeFile(path, bytesOf("x")));
    EXPECT_FALSE(fs::exists(target));
}

TEST_F(PosixFileSystemTest, FifoNeitherBlocksNorIsWritten) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(files.openForWriting(path), nullptr);
    EXPECT_FALSE(files.writeWholeFile(path, bytesOf("x")));
    // With a reader at its other end it could be opened, and is still refused.
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(files.openForWriting(path), nullptr);
    EXPECT_FALSE(files.writeWholeFile(path, bytesOf("x")));
    close(reader);
}

TEST_F(PosixFileSystemTest, FileWithASecondNameIsRefused) {
    const auto precious = folder / "precious";
    std::ofstream(precious) << "precious";
    fs::create_hard_link(precious, path);
    EXPECT_EQ(files.openForWriting(path), nullptr);
    EXPECT_FALSE(files.writeWholeFile(path, bytesOf("x")));
    EXPECT_EQ(content(precious), "precious");
    fs::remove(precious);
    EXPECT_TRUE(files.writeWholeFile(path, bytesOf("x"))) << "with one name it is ours";
}

TEST_F(PosixFileSystemTest, FileOfAnotherUserIsRefused) {
    std::ofstream(path) << "theirs";
    constexpr uid_t nobody = 65534;
    if (chown(path.c_str(), nobody, static_cast<gid_t>(-1)) != 0)
        GTEST_SKIP() << "only root can give files away";
    EXPECT_EQ(files.openForWriting(path), nullptr);
    EXPECT_FALSE(files.writeWholeFile(path, bytesOf("x")));
    EXPECT_EQ(content(path), "theirs");
}

TEST_F(PosixFileSystemTest, RefusalIsSaidOnceInARun) {
    const test::LogReader log;
    std::ofstream(folder / "one") << "";
    fs::create_hard_link(folder / "one", path);
    files.openForWriting(path);
    files.writeWholeFile(path, bytesOf("x"));
    files.openForWriting(path);
    EXPECT_EQ(log.complaints().size(), 1U);
}

TEST_F(PosixFileSystemTest, FolderAndMissingFolderAreRefused) {
    EXPECT_EQ(files.openForWriting(folder.path().string()), nullptr);
    EXPECT_FALSE(files.writeWholeFile(folder.path().string(), bytesOf("x")));
    EXPECT_FALSE(files.writeWholeFile((folder / "none" / "file").string(), bytesOf("x")));
}

} // namespace
} // namespace kelo::desktop
