#include "e2e/VoiceProgramFixture.h"
#include "testing/rig/ChildProcess.h"

namespace kelo::e2e {

namespace {

constexpr std::chrono::seconds patience{30};

/// The screen as two monitors side by side, of different height.
class VoiceMonitors : public VoiceProgramFixture {
protected:
    const rig::Area left{{0, 0}, 640, 800};
    const rig::Area right{{640, 0}, 640, 900};

    void SetUp() override {
        xrandr({"--setmonitor", "left", "640/170x800/210+0+0", "screen"});
        xrandr({"--setmonitor", "right", "640/170x900/240+640+0", "none"});
        VoiceProgramFixture::SetUp();
    }

    void TearDown() override {
        VoiceProgramFixture::TearDown();
        xrandr({"--delmonitor", "left"});
        xrandr({"--delmonitor", "right"});
    }

    void xrandr(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "/usr/bin/xrandr");
        rig::ChildProcess process(arguments, {}, folder.path() / "xrandr.log");
        ASSERT_EQ(process.awaitExit(patience), 0) << process.printed();
    }
};

} // namespace

TEST_F(VoiceMonitors, ShowThePanelWhereTheKeyboardIs) {
    screen::OtherProgram onLeft({60, 60, 300, 200});
    goTo(onLeft);
    auto shown = tapToShow();
    awaitPlace(shown, placeOn(left));
    awaitWidgetPage(shown);
    picture("left");
    tapToHide();

    screen::OtherProgram onRight({700, 60, 300, 200});
    goTo(onRight);
    shown = tapToShow();
    awaitPlace(shown, placeOn(right));
    awaitWidgetPage(shown);
    picture("right");
    tapToHide();

    goTo(onLeft);
    awaitPlace(tapToShow(), placeOn(left));
}

} // namespace kelo::e2e
