#include "linux/downloads/DownloadFolder.h"

#include "testing/TemporaryFolder.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

namespace {

/// What the file system says instead of the truth, in bytes.
std::optional<long> claimedNameLength;

} // namespace

/// In the C library's place.
extern "C" long pathconf(const char* path, int name) noexcept {
    if (claimedNameLength && name == _PC_NAME_MAX)
        return *claimedNameLength;
    static const auto real = reinterpret_cast<decltype(&pathconf)>(dlsym(RTLD_NEXT, "pathconf"));
    return real(path, name);
}

namespace kelo::test {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

void write(const fs::path& path, const std::string& contents) {
    std::ofstream(path) << contents;
}

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> filesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

class DownloadFolder : public testing::Test {
protected:
    const TemporaryFolder temporary;
    const fs::path folder = temporary / "Downloads";
    downloads::DownloadFolder downloadFolder{folder};
};

TEST_F(DownloadFolder, IsMadeForItsUserAlone) {
    const auto place = downloadFolder.makePlace("report.pdf");
    struct stat found {};
    ASSERT_EQ(::stat(folder.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0700U);
}

TEST_F(DownloadFolder, ShowsAFileOnlyWhenItIsComplete) {
    const auto place = downloadFolder.makePlace("report.pdf");
    write(place->growingPath(), "half");
    EXPECT_FALSE(fs::exists(folder / "report.pdf"));
    for (const std::string& name : filesIn(folder))
        EXPECT_TRUE(name.starts_with("."));
    EXPECT_EQ(place->complete(), folder / "report.pdf");
    EXPECT_EQ(contentsOf(folder / "report.pdf"), "half");
}

TEST_F(DownloadFolder, HidesFromOthersWhatIsNotComplete) {
    const auto place = downloadFolder.makePlace("report.pdf");
    struct stat found {};
    ASSERT_EQ(::stat(fs::path(place->growingPath()).parent_path().c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0700U);
}

TEST_F(DownloadFolder, KeepsNothingOfAPlaceThatIsGone) {
    auto place = downloadFolder.makePlace("report.pdf");
    write(place->growingPath(), "half");
    write(place->growingPath() + ".wkdownload", "of the engine");
    place.reset();
    EXPECT_THAT(filesIn(folder), IsEmpty());
}

TEST_F(DownloadFolder, IsRidOfAPlaceThatIsStillHeld) {
    const auto place = downloadFolder.makePlace("report.pdf");
    write(place->growingPath(), "half");
    place->discard();
    EXPECT_THAT(filesIn(folder), IsEmpty());
}

TEST_F(DownloadFolder, KeepsOnlyTheFileOfACompletePlace) {
    auto place = downloadFolder.makePlace("report.pdf");
    write(place->growingPath(), "whole");
    place->complete();
    place.reset();
    EXPECT_THAT(filesIn(folder), ElementsAre("report.pdf"));
}

TEST_F(DownloadFolder, GivesOutNoNameThatAFileHas) {
    fs::create_directories(folder);
    write(folder / "report.pdf", "older");
    fs::create_symlink("nowhere", folder / "report (2).pdf");
    EXPECT_EQ(downloadFolder.makePlace("report.pdf")->name(), "report (3).pdf");
}

TEST_F(DownloadFolder, GivesOutNoNameTwice) {
    auto first = downloadFolder.makePlace("name.tar.gz");
    const auto second = downloads::DownloadFolder(folder).makePlace("name.tar.gz");
    EXPECT_EQ(first->name(), "name.tar.gz");
    EXPECT_EQ(second->name(), "name (2).tar.gz");
    first.reset();
    EXPECT_EQ(downloadFolder.makePlace("name.tar.gz")->name(), "name.tar.gz");
}

TEST_F(DownloadFolder, OverwritesNothing) {
    const auto place = downloadFolder.makePlace("report.pdf");
    write(place->growingPath(), "new");
    write(folder / "report.pdf", "came meanwhile");
    EXPECT_EQ(place->complete(), folder / "report (2).pdf");
    EXPECT_EQ(contentsOf(folder / "report.pdf"), "came meanwhile");
    EXPECT_EQ(contentsOf(folder / "report (2).pdf"), "new");
}

TEST_F(DownloadFolder, TakesNamesOf300Letters) {
    const auto place = downloadFolder.makePlace(std::string(300, 'n') + ".pdf");
    write(place->growingPath(), "whole");
    EXPECT_EQ(fs::path(place->complete()).filename(), std::string(251, 'n') + ".pdf");
}

// Those of sticks do: they count the most bytes that 255 characters could have anywhere.
TEST_F(DownloadFolder, BelievesNoFileSystemThatClaimsToTakeLongerNames) {
    claimedNameLength = 1530;
    const auto place = downloadFolder.makePlace(std::string(300, 'n') + ".pdf");
    claimedNameLength.reset();
    EXPECT_EQ(place->name(), std::string(251, 'n') + ".pdf");
}

TEST_F(DownloadFolder, FailsWhereNoNameCanBeLookedUp) {
    // Short enough for the folder, and too long for a path in it.
    fs::path deep = folder;
    while (deep.string().size() < 3900)
        deep /= std::string(150, 'd');
    EXPECT_THROW(downloads::DownloadFolder(deep).makePlace(std::string(251, 'n') + ".pdf"),
                 std::system_error);
    EXPECT_THAT(filesIn(deep), IsEmpty());
}

TEST_F(DownloadFolder, FailsWithTheReasonOfTheSystem) {
    write(temporary / "Downloads", "a file in its place");
    try {
        downloadFolder.makePlace("report.pdf");
        FAIL() << "there is no place";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ENOTDIR);
    }
}

TEST_F(DownloadFolder, IsRidOfWhatAnEarlierProcessLeft) {
    fs::create_directories(folder / ".kelo-download-abcdef");
    write(folder / ".kelo-download-abcdef" / "file", "half");
    write(folder / "mine.txt", "kept");
    fs::create_directories(temporary / "elsewhere");
    write(temporary / "elsewhere/file", "kept");
    fs::create_symlink(temporary / "elsewhere", folder / ".kelo-download-link");
    downloads::removeLeftovers(folder);
    EXPECT_THAT(filesIn(folder), UnorderedElementsAre("mine.txt", ".kelo-download-link"));
    EXPECT_EQ(contentsOf(temporary / "elsewhere/file"), "kept");
}

TEST_F(DownloadFolder, KeepsWhatIsStillGrowing) {
    const auto place = downloadFolder.makePlace("report.pdf");
    write(place->growingPath(), "half");
    downloads::removeLeftovers(folder);
    EXPECT_EQ(contentsOf(place->growingPath()), "half");
}

TEST_F(DownloadFolder, MovesWithoutReplacingOnAnyFileSystem) {
    fs::create_directories(folder);
    for (const auto move : {downloads::moveWithoutReplacing, downloads::claimAndMove}) {
        write(folder / "from", "new");
        write(folder / "taken", "older");
        EXPECT_FALSE(move(folder / "from", folder / "taken"));
        EXPECT_EQ(contentsOf(folder / "taken"), "older");
        EXPECT_TRUE(move(folder / "from", folder / "free"));
        EXPECT_EQ(contentsOf(folder / "free"), "new");
        EXPECT_FALSE(fs::exists(folder / "from"));
        fs::remove(folder / "free");
        EXPECT_THROW(move(folder / "nothing", folder / "free"), std::system_error);
        EXPECT_FALSE(fs::exists(folder / "free"));
    }
}

} // namespace
} // namespace kelo::test
