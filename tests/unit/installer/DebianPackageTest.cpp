#include "updater/install/DebianPackage.h"
#include "component/installer/Trees.h"
#include "updater/error/UpdateError.h"

#include <gtest/gtest.h>

namespace kelo::tests {

namespace {

using Members = std::vector<PackageMember>;
using updater::UpdateError;

constexpr mode_t folderType = 0040000;
constexpr mode_t linkType = 0120000;
constexpr int tooMany = 20001;

TarEntry control(const std::string& text = "Package: kelo\nArchitecture: amd64\n") {
    return {.path = "./control", .content = text};
}

TarEntry informationOf(const std::string& version) {
    return {.path = "./usr/share/kelo/Info.plist", .content = information(version)};
}

/// Reads a package with these members.
class DebianPackageTest : public testing::Test {
protected:
    updater::DebianPackage read(const Members& members) const {
        writeMembers(path, members);
        return updater::readDebianPackage(openForReading(path).get());
    }
    updater::DebianPackage readWith(const std::string& text) const {
        return read({{"control.tar.xz", {control(text)}}, data});
    }
    void expectRefused(const Members& members) const { EXPECT_THROW(read(members), UpdateError); }

    TreeFolder folder;
    std::filesystem::path path = folder / "kelo.deb";
    PackageMember description{"control.tar.xz", {control()}};
    PackageMember data{"data.tar.zst", {informationOf("1.1")}};
};

} // namespace

TEST_F(DebianPackageTest, SaysWhatItIs) {
    const auto found = read({description, data});
    EXPECT_EQ(found.name, "kelo");
    EXPECT_EQ(found.architecture, "amd64");
    EXPECT_EQ(found.version, "1.1");
}

TEST_F(DebianPackageTest, MayNameItsFilesWithoutADot) {
    description.entries[0].path = "control";
    data.entries[0].path = "usr/share/kelo/Info.plist";
    EXPECT_EQ(read({description, data}).version, "1.1");
}

TEST_F(DebianPackageTest, IsNamedByTheFieldWithExactlyThisName) {
    const auto found = readWith("Package-Type: deb\nPackage: kelo\nArchitecture:amd64\n");
    EXPECT_EQ(found.name, "kelo");
    EXPECT_EQ(found.architecture, "amd64");
}

TEST_F(DebianPackageTest, IsNamedWithoutTheBlanksAroundIt) {
    EXPECT_EQ(readWith("Package: \t kelo \t\r\n").name, "kelo");
    EXPECT_EQ(readWith("Package: \t \n").name, "");
    EXPECT_EQ(readWith("Version: 1\n").name, "");
}

TEST_F(DebianPackageTest, IsWhatItsFirstMemberOfEachKindSays) {
    const PackageMember other{"control.tar.gz", {control("Package: other\n")}};
    const PackageMember older{"data.tar.gz", {informationOf("1.0")}};
    const auto found = read({description, other, data, older});
    EXPECT_EQ(found.name, "kelo");
    EXPECT_EQ(found.version, "1.1");
}

TEST_F(DebianPackageTest, WithoutEitherMemberIsRefused) {
    expectRefused({description});
    expectRefused({data});
    expectRefused({});
}

TEST_F(DebianPackageTest, WithoutEitherFileIsRefused) {
    expectRefused({{"control.tar.xz", {{.path = "./md5sums", .content = "x"}}}, data});
    expectRefused({description, {"data.tar.zst", {{.path = "./usr/bin/kelo", .content = "x"}}}});
}

TEST_F(DebianPackageTest, WhoseFileIsNoneIsRefused) {
    const std::string text = control().content;
    for (const TarEntry& entry :
         {TarEntry{.path = "./control", .type = folderType},
          TarEntry{.path = "./control", .type = linkType, .symbolicLink = "other"},
          TarEntry{.path = "./control", .hardLink = "./other"}})
        expectRefused({{"control.tar.xz", {{.path = "./other", .content = text}, entry}}, data});
}

TEST_F(DebianPackageTest, WithAFileTwiceIsRefused) {
    for (const auto* path : {"./control", "control"}) {
        TarEntry second = control("Package: other\n");
        second.path = path;
        expectRefused({{"control.tar.xz", {control(), second}}, data});
    }
    expectRefused({description, {"data.tar.zst", {informationOf("1.1"), informationOf("1.0")}}});
}

TEST_F(DebianPackageTest, WithoutAVersionIsRefused) {
    for (const auto* text : {"", "<plist/>", "<plist version=\"1.0\"><dict/></plist>"}) {
        data.entries[0].content = text;
        expectRefused({description, data});
    }
}

TEST_F(DebianPackageTest, WithALongerDescriptionThanAnyOfOursIsRefused) {
    EXPECT_EQ(readWith("Package: kelo\n" + std::string(200'000, ' ')).name, "kelo");
    EXPECT_THROW(readWith("Package: kelo\n" + std::string(300'000, ' ')), UpdateError);
}

TEST_F(DebianPackageTest, WithMoreFilesThanAnyOfOursIsRefused) {
    for (int file = 0; file < tooMany; ++file)
        data.entries.push_back({.path = "./" + std::to_string(file)});
    expectRefused({description, data});
}

TEST_F(DebianPackageTest, WithMoreMembersThanAnyOfOursIsRefused) {
    read({description, data});
    std::string package = readFile(path);
    for (int member = 0; member < tooMany; ++member)
        package += "_other          0           0     0     100644  0         `\n";
    writeFile(path, package);
    EXPECT_THROW(updater::readDebianPackage(openForReading(path).get()), UpdateError);
}

TEST_F(DebianPackageTest, ThatIsCutOffAnywhereIsRefused) {
    read({description, data});
    const std::string whole = readFile(path);
    for (std::size_t length = 0; length < whole.size() - 1; length += 7) {
        writeFile(path, whole.substr(0, length));
        EXPECT_THROW(updater::readDebianPackage(openForReading(path).get()), UpdateError) << length;
    }
}

} // namespace kelo::tests
