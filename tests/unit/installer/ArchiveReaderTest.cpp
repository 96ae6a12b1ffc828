#include "updater/install/ArchiveReader.h"
#include "component/installer/Trees.h"
#include "updater/error/UpdateError.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelo::tests {

namespace {

namespace fs = std::filesystem;
using updater::ArchiveLimits;
using updater::unpackArchive;
using updater::UpdateError;
using updater::UpdateErrorKind;

class ArchiveReader : public testing::Test {
protected:
    ArchiveReader() { fs::create_directory(target); }

    std::string unpack(const fs::path& archive, const ArchiveLimits& limits = {}) const {
        const posix::FileDescriptor place(
            ::open(target.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return unpackArchive(openForReading(archive).get(), place.get(), limits);
    }

    fs::path archiveOf(const std::vector<TarEntry>& entries) const {
        writeArchive(folder / "kelo.tar.zst", entries);
        return folder / "kelo.tar.zst";
    }

    void expectRefused(const fs::path& archive, const ArchiveLimits& limits = {}) const {
        try {
            unpack(archive, limits);
            FAIL() << "it was taken";
        } catch (const UpdateError& error) {
            EXPECT_EQ(error.kind(), UpdateErrorKind::installing) << error.cause();
            EXPECT_THAT(error.localizedDescription(), testing::HasSubstr("not packed correctly"));
        }
        for (const auto& entry : fs::directory_iterator(folder.path()))
            EXPECT_TRUE(entry.path() == target || entry.path() == archive) << entry.path();
    }

    TreeFolder folder;
    fs::path target = folder / "target";
};

const TarEntry plainFile{.path = "kelo/bin/kelo", .permissions = 0755, .content = "program"};

struct Hostile {
    const char* name;
    std::vector<TarEntry> entries;
};

class HostileArchive : public ArchiveReader, public testing::WithParamInterface<Hostile> {};

constexpr mode_t folderType = 0040000;
constexpr mode_t linkType = 0120000;
constexpr mode_t pipeType = 0010000;
constexpr mode_t deviceType = 0020000;

} // namespace

TEST_F(ArchiveReader, UnpacksATreeAsItWasPackedWhateverTheCompression) {
    writeTree(folder / "tree", "1.1");
    for (const auto* ending : {"zst", "xz", "gz"}) {
        const fs::path archive = folder / (std::string("kelo.tar.") + ending);
        packTree(folder / "tree", "kelo-1.1", archive);
        fs::remove_all(target);
        fs::create_directory(target);
        EXPECT_EQ(unpack(archive), "kelo-1.1");
        EXPECT_EQ(contentsOf(target / "kelo-1.1"), contentsOf(folder / "tree")) << ending;
        EXPECT_EQ(outputOf(target / "kelo-1.1/bin/kelo"), "1.1\n");
    }
}

TEST_F(ArchiveReader, TakesOverOnlyWhetherAFileIsExecutable) {
    unpack(archiveOf({plainFile, {.path = "kelo/open.txt", .permissions = 0666}}));
    struct stat status {};
    ::stat((target / "kelo/bin/kelo").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0755U);
    ::stat((target / "kelo/open.txt").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0644U);
}

TEST_F(ArchiveReader, ReadsFromTheBeginningWhateverTheOffset) {
    const posix::FileDescriptor archive = openForReading(archiveOf({plainFile}));
    ::lseek(archive.get(), 0, SEEK_END);
    const posix::FileDescriptor place(::open(target.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(unpackArchive(archive.get(), place.get()), "kelo");
}

TEST_F(ArchiveReader, KeepsLinksThatStayInTheTree) {
    unpack(archiveOf({plainFile,
                      {.path = "kelo/bin/k", .type = linkType, .symbolicLink = "kelo"},
                      {.path = "kelo/libexec/k", .type = linkType, .symbolicLink = "../bin/kelo"},
                      {.path = "kelo/bin/same", .hardLink = "kelo/bin/kelo"}}));
    EXPECT_EQ(readFile(target / "kelo/bin/k"), "program");
    EXPECT_EQ(readFile(target / "kelo/libexec/k"), "program");
    EXPECT_EQ(readFile(target / "kelo/bin/same"), "program");
}

TEST_P(HostileArchive, IsRefusedAndNothingIsWrittenBesideTheFolder) {
    expectRefused(archiveOf(GetParam().entries));
}

INSTANTIATE_TEST_SUITE_P(
    Of, HostileArchive,
    testing::Values(
        Hostile{"Nothing", {}}, Hostile{"AnAbsolutePath", {plainFile, {.path = "/tmp/kelo-evil"}}},
        Hostile{"AWayUp", {plainFile, {.path = "kelo/../../evil"}}},
        Hostile{"TwoTopFolders", {plainFile, {.path = "other/file"}}},
        Hostile{"AFileAtTheTop", {{.path = "kelo"}}},
        Hostile{"ADevice", {plainFile, {.path = "kelo/device", .type = deviceType}}},
        Hostile{"APipe", {plainFile, {.path = "kelo/pipe", .type = pipeType}}},
        Hostile{"ASetUserBit", {{.path = "kelo/bin/kelo", .permissions = 04755}}},
        Hostile{"ASetGroupBit", {{.path = "kelo/bin/kelo", .permissions = 02755}}},
        Hostile{"AStickyFolder",
                {plainFile, {.path = "kelo/all", .type = folderType, .permissions = 01777}}},
        Hostile{"ALinkToAnAbsolutePath",
                {plainFile, {.path = "kelo/link", .type = linkType, .symbolicLink = "/etc"}}},
        Hostile{"ALinkOutOfTheTree",
                {plainFile, {.path = "kelo/link", .type = linkType, .symbolicLink = "../x"}}},
        Hostile{"AHardLinkOut",
                {plainFile, {.path = "kelo/link", .hardLink = "../../../etc/passwd"}}},
        Hostile{"AHardLinkToNothing", {plainFile, {.path = "kelo/link", .hardLink = "kelo/none"}}},
        Hostile{"TheSameNameTwice", {plainFile, plainFile}},
        Hostile{"AFileThatIsAFolderToo", {plainFile, {.path = "kelo/bin/kelo/more"}}},
        Hostile{"ALinkOverAFile",
                {plainFile, {.path = "kelo/bin/kelo", .type = linkType, .symbolicLink = "x"}}}),
    [](const auto& info) { return info.param.name; });

TEST_F(ArchiveReader, WritesNothingThroughALinkOfTheArchiveItself) {
    expectRefused(archiveOf({plainFile,
                             {.path = "kelo/way", .type = linkType, .symbolicLink = "bin"},
                             {.path = "kelo/way/through", .content = "x"}}));
    EXPECT_FALSE(fs::exists(target / "kelo/bin/through"));
}

TEST_F(ArchiveReader, RefusesMoreEntriesThanTheLimit) {
    const auto archive = archiveOf({plainFile, {.path = "kelo/a"}, {.path = "kelo/b"}});
    EXPECT_EQ(unpack(archive, {.entries = 3}), "kelo");
    fs::remove_all(target / "kelo");
    expectRefused(archive, {.entries = 2});
}

TEST_F(ArchiveReader, RefusesMoreBytesThanTheLimitWhateverTheyArePackedInto) {
    const auto archive = archiveOf({{.path = "kelo/a", .content = std::string(40000, 'a')},
                                    {.path = "kelo/b", .content = std::string(40000, 'b')}});
    EXPECT_EQ(unpack(archive, {.bytes = 80000}), "kelo");
    fs::remove_all(target / "kelo");
    expectRefused(archive, {.bytes = 79999});
    EXPECT_LT(fs::file_size(archive), 1000U);
}

TEST_F(ArchiveReader, RefusesWhatIsCutOff) {
    const auto archive = archiveOf({{.path = "kelo/a", .content = std::string(100000, 'a')}});
    fs::resize_file(archive, fs::file_size(archive) / 2);
    expectRefused(archive);
}

TEST_F(ArchiveReader, RefusesWhatIsNoArchive) {
    writeFile(folder / "kelo.tar.zst", "#!/bin/sh\necho evil\n");
    expectRefused(folder / "kelo.tar.zst");
}

} // namespace kelo::tests
