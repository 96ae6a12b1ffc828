#include "linux/tray/IconFiles.h"
#include "linux/tray/IconPixmaps.h"
#include "testing/TemporaryFolder.h"

#include <giomm/init.h>
#include <glibmm/init.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdlib.h>

namespace kelo::tests {
namespace {

namespace files = std::filesystem;

TEST(IconPixmaps, AreAlphaRedGreenBlueInThisOrderAndNotMultiplied) {
    const auto pixmaps = tray::iconPixmaps({{2, {0, 255, 128, 1}}, {1, {7}}}, 0xa1b2c3);
    EXPECT_EQ(pixmaps.get_type_string(), "a(iiay)");
    EXPECT_EQ(pixmaps.print(false).raw(),
              "[(2, 2, [0x00, 0xa1, 0xb2, 0xc3, 0xff, 0xa1, 0xb2, 0xc3, "
              "0x80, 0xa1, 0xb2, 0xc3, 0x01, 0xa1, 0xb2, 0xc3]), "
              "(1, 1, [0x07, 0xa1, 0xb2, 0xc3])]");
    EXPECT_EQ(tray::iconPixmaps({}, 0).get_type_string(), "a(iiay)");
}

TEST(IconMasks, HaveTheSizesThatTraysUseAndThePicture) {
    Glib::init();
    std::vector<int> sizes;
    for (const auto& mask : tray::iconMasks("kelo-brain-symbolic")) {
        sizes.push_back(mask.size);
        ASSERT_EQ(mask.coverage.size(), static_cast<std::size_t>(mask.size * mask.size));
        EXPECT_EQ(mask.coverage.front(), 0) << "the corner is free";
        const auto covered = std::count_if(mask.coverage.begin(), mask.coverage.end(),
                                           [](std::uint8_t value) { return value > 127; });
        EXPECT_GT(covered, mask.size * mask.size / 8) << mask.size;
        EXPECT_LT(covered, mask.size * mask.size * 3 / 4) << mask.size;
    }
    EXPECT_EQ(sizes, (std::vector<int>{16, 22, 24, 32, 48}));
    EXPECT_TRUE(tray::iconMasks("kelo-person-badge-key-symbolic").empty());
}

struct IconFiles : testing::Test {
    const test::TemporaryFolder folder;

    void install(const files::path& share) const {
        const auto apps = folder / share / "icons/hicolor/symbolic/apps";
        files::create_directories(apps);
        std::ofstream(apps / "kelo-brain-symbolic.svg") << "<svg/>";
    }
    tray::IconFiles find() const {
        return tray::findIconFiles("kelo-brain-symbolic", folder / "anywhere/bin",
                                   {(folder / "usr/share").string()});
    }
};

TEST_F(IconFiles, NeedNoPathWhereEveryProgramLooks) {
    install("usr/share");
    install("anywhere/share");
    EXPECT_TRUE(find().areFound);
    EXPECT_EQ(find().themePath, "");
}

TEST_F(IconFiles, AreFoundBesideAProgramThatWasUnpackedAnywhere) {
    install("anywhere/share");
    EXPECT_TRUE(find().areFound);
    EXPECT_EQ(find().themePath, (folder / "anywhere/share/icons").string());
}

TEST_F(IconFiles, AreMissingWhereTheProgramWasOnlyBuilt) {
    EXPECT_FALSE(find().areFound);
    EXPECT_EQ(find().themePath, "");
}

} // namespace
} // namespace kelo::tests
