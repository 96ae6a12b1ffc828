#include "unit/updater/UpdaterFixture.h"

namespace kelo::test {

using updater::RelaunchChoice;
using updater::UpdateChoice;

using UpdaterRoad = UpdaterFixture;

TEST_F(UpdaterRoad, LeadsFromTheCheckToTheRelaunch) {
    check();
    EXPECT_EQ(lastShown(), "offer 1.0 -> 1.1");
    choose(UpdateChoice::install);
    EXPECT_EQ(lastShown(), "ready 1.1");
    EXPECT_EQ(installer.prepared, std::vector<std::string>{archive});
    EXPECT_EQ(installer.preparedName, "kelo.tar.zst");
    EXPECT_EQ(installer.installations, 0);
    chooseRelaunch(RelaunchChoice::installAndRelaunch);
    EXPECT_EQ(installer.installations, 1);
    EXPECT_FALSE(user.open);
    EXPECT_EQ(user.shown, (std::vector<std::string>{"checking", "offer 1.0 -> 1.1", "download",
                                                    "preparing", "ready 1.1", "preparing"}));
}

TEST_F(UpdaterRoad, TakesOfOneReleaseTheArchiveThatThisCopyCanBeReplacedWith) {
    std::string package = signedRelease("1.1");
    package.replace(package.find("kelo.tar.zst"), 12, "kelo.deb");
    transport.replies["https://updates.example.com/kelo.deb"] = bytesOf(archive);
    publish(signedRelease("1.1") + package + signedRelease("0.9"));
    installer.takes = ".deb";
    check();
    choose(UpdateChoice::install);
    EXPECT_EQ(installer.preparedName, "kelo.deb");
}

} // namespace kelo::test
