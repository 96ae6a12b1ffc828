#include "e2e/VoiceProgramFixture.h"

#include <cstdlib>

namespace kelo::e2e {

namespace {

class VoiceMicrophone : public VoiceProgramFixture {};

} // namespace

// The tone that the test's microphone hears does not change; what the page measures of it does,
// from nothing to the tone's level and back to nothing.
TEST_F(VoiceMicrophone, IsLiveByAClickAndMovesTheMeter) {
    if (!std::getenv("PULSE_SERVER"))
        GTEST_SKIP()
            << "There is no microphone here: run it inside tests/component/with-microphone.";
    const auto level = [&] {
        const auto meter = desktop().tree.find(rig::pageMeter("Microphone level"));
        return meter ? meter->value() : -1;
    };
    const auto shown = tapToShow();
    awaitWidgetPage(shown);
    EXPECT_EQ(level(), 0);
    clickInPanel(shown, rig::pageButton("Start microphone"));
    desktop().tree.await(rig::pageButton("Stop microphone"));
    awaitThat("the meter shows the tone", [&] { return level() > 30; });
    picture("live");
    clickInPanel(shown, rig::pageButton("Stop microphone"));
    awaitThat("the meter rests", [&] { return level() == 0; });
    picture("stopped");
}

} // namespace kelo::e2e
