// On a screen that has not enough room for the windows.
#include "component/gtk/OverlayFixture.h"
#include "component/gtk/PasskeysWindowFixture.h"

#include <gdk/gdkkeysyms.h>

namespace kelo::tests {
namespace {

/// Whether all of it is on the screen.
testing::AssertionResult isOnTheScreen(RunningProgram& program, Gtk::Widget& widget) {
    const auto box = program.boxOf(widget);
    if (box.x >= 0 && box.y >= 0 && box.width > 0 && box.height > 0 &&
        box.x + box.width <= program.screen.width() &&
        box.y + box.height <= program.screen.height())
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << box.width << "x" << box.height << " at " << box.x << ", " << box.y << " of "
           << program.screen.width() << "x" << program.screen.height();
}

class SmallScreen : public OverlayFixture {
protected:
    testing::AssertionResult isOnTheScreen(Gtk::Widget& widget) {
        return tests::isOnTheScreen(program, widget);
    }
};

TEST_F(SmallScreen, ShowsThePanelWhole) {
    whileOnLogin([&] {
        EXPECT_TRUE(isOnTheScreen(program.app.page->area));
        EXPECT_TRUE(isOnTheScreen(*panel()));
        EXPECT_TRUE(isOnTheScreen(*signIn()));
        program.click(*signIn());
        RunningProgram::until("it is clicked", [&] { return program.app.count("sign in") == 1; });
    });
}

TEST_F(SmallScreen, ShowsTheMaximisedWindowWhole) {
    whileOnLogin([&] {
        main().maximize();
        RunningProgram::until("it fills the screen", [&] {
            return program.boxOf(main()).width == program.screen.width();
        });
        program.untilDrawn(main());
        EXPECT_TRUE(isOnTheScreen(*panel()));
    });
}

TEST_F(SmallScreen, AsksForNoMoreThanThereIs) {
    whileOnLogin([&] {
        const auto limits = program.screen.sizeLimits(main().get_surface()->gobj());
        EXPECT_LE(limits.minimumWidth, program.screen.width());
        EXPECT_LE(limits.minimumHeight, program.screen.height());
    });
}

class PasskeysOnASmallScreen : public PasskeysWindowFixture {};

TEST_F(PasskeysOnASmallScreen, AreShownWithWhatTheyNeed) {
    inventory->add(std::string(64, 'W'));
    std::string sentence;
    for (int word = 0; word < 100; ++word)
        sentence += "word ";
    inventory->found = {{"chip", inventory::Finding::State::notice, "Security chip", sentence}};
    whileOpen([&] {
        RunningProgram::until("all is shown", [&] { return withClass(window(), "kelo-findings"); });
        program.untilDrawn(window());
        EXPECT_TRUE(isOnTheScreen(program, window()));
        EXPECT_TRUE(isOnTheScreen(program, deleteButton(std::string(64, 'W'))));
    });
}

} // namespace
} // namespace kelo::tests
