#include "publisher/Package.h"
#include "component/installer/Trees.h"
#include "publisher/Failure.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace kelo::publisher {

namespace {

using testing::HasSubstr;
using tests::information;
using tests::TreeFolder;

std::string programFor(char machine) {
    std::string program = "\177ELF" + std::string(60, '\0');
    program[18] = machine;
    return program;
}

void expectRefused(const std::filesystem::path& path, const std::string& because) {
    try {
        readPackage(path);
        FAIL() << "it was taken";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(because));
    }
}

} // namespace

TEST(Package, TellsItsVersionAndItsProcessor) {
    const TreeFolder folder;
    for (const auto& [machine, system] :
         {std::pair{'\x3e', "linux-x86_64"}, std::pair{'\xb7', "linux-aarch64"},
          std::pair{'\x08', "linux"}}) {
        tests::writeArchive(
            folder / "kelo.tar.zst",
            {{.path = "kelo-1.1/bin/kelo", .content = programFor(machine)},
             {.path = "kelo-1.1/share/kelo/Info.plist", .content = information("1.1")}});
        const auto package = readPackage(folder / "kelo.tar.zst");
        EXPECT_EQ(package.version, "1.1");
        EXPECT_EQ(package.shortVersion, "1.1");
        EXPECT_EQ(package.system, system);
    }
}

TEST(Package, TellsTheLeastSystemThatItNeeds) {
    const TreeFolder folder;
    std::string plist = information("1.1");
    plist.insert(plist.find("</dict>"), "<key>LSMinimumSystemVersion</key><string>2.36</string>");
    tests::writeArchive(folder / "kelo.tar.zst",
                        {{.path = "kelo-1.1/bin/kelo", .content = programFor('\x3e')},
                         {.path = "kelo-1.1/share/kelo/Info.plist", .content = plist}});
    EXPECT_EQ(readPackage(folder / "kelo.tar.zst").minimumSystem, "2.36");
}

TEST(Package, IsToldByItsName) {
    EXPECT_TRUE(isPackageName("folder/kelo-1.1.tar.zst"));
    EXPECT_TRUE(isPackageName("kelo-1.1.deb"));
    EXPECT_FALSE(isPackageName("kelo-1.1.md"));
    EXPECT_FALSE(isPackageName(".kelo-1.1.deb"));
    EXPECT_EQ(packageStem("folder/kelo-1.1.tar.zst"), "kelo-1.1");
    EXPECT_EQ(packageStem("kelo-1.1.deb"), "kelo-1.1");
}

TEST(Package, ThatLacksAnythingIsRefusedByName) {
    const TreeFolder folder;
    const auto path = folder / "kelo.tar.gz";
    tests::writeArchive(path, {{.path = "kelo-1.1/bin/kelo", .content = "x"}});
    expectRefused(path, "lacks bin/kelo or share/kelo/Info.plist");
    tests::writeArchive(path, {{.path = "kelo-1.1/bin/kelo", .content = "x"},
                               {.path = "kelo-1.1/share/kelo/Info.plist", .content = "x"}});
    expectRefused(path, "is damaged");
    tests::writeArchive(path, {{.path = "kelo-1.1/bin/kelo", .content = "x"},
                               {.path = "kelo-1.1/share/kelo/Info.plist",
                                .content = "<plist version=\"1.0\"><dict/></plist>"}});
    expectRefused(path, "CFBundleVersion");
    tests::writeFile(path, "no archive");
    expectRefused(path, "cannot be read as a package");
    expectRefused(folder / "missing.deb", "cannot be read as a package");
}

TEST(Package, ThatIsCutOffBehindWhatItIsIsRefused) {
    const TreeFolder folder;
    std::mt19937 noise;
    std::string picture(300'000, '\0');
    std::ranges::generate(picture, [&] { return static_cast<char>(noise()); });
    const auto filesBelow = [&](const std::string& top) {
        return std::vector<tests::TarEntry>{
            {.path = top + "/share/kelo/Info.plist", .content = information("1.1")},
            {.path = top + "/bin/kelo", .content = programFor('\x3e')},
            {.path = top + "/share/picture", .content = picture}};
    };
    tests::writeArchive(folder / "kelo.tar.zst", filesBelow("kelo-1.1"));
    tests::writeMembers(folder / "kelo.deb", {{"data.tar.zst", filesBelow("./usr")}});
    for (const auto& path : {folder / "kelo.tar.zst", folder / "kelo.deb"}) {
        EXPECT_EQ(readPackage(path).version, "1.1");
        const std::string whole = tests::readFile(path);
        tests::writeFile(path, whole.substr(0, whole.size() / 2));
        expectRefused(path, "cannot be read as a package");
    }
}

TEST(Package, ForDebianIsReadLikeATree) {
    const TreeFolder folder;
    const auto path = folder / "kelo-1.1.deb";
    tests::writePackage(path, {});
    EXPECT_EQ(readPackage(path).version, "1.1");
}

TEST(Package, ForDebianThatIsDamagedInsideIsRefused) {
    const TreeFolder folder;
    const auto path = folder / "kelo-1.1.deb";
    tests::writePackage(path, {});
    const std::string whole = tests::readFile(path);
    // In the content, and in what the content is packed with.
    for (const std::size_t missing : {std::size_t(40), std::size_t(200)}) {
        tests::writeFile(path, whole.substr(0, whole.size() - missing));
        expectRefused(path, "cannot be read as a package");
    }
    std::string changed = whole;
    changed.replace(changed.size() - 40, 20, std::string(20, '\xff'));
    tests::writeFile(path, changed);
    expectRefused(path, "cannot be read as a package");
}

} // namespace kelo::publisher
