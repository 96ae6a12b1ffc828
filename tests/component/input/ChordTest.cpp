#include "component/input/InputFixture.h"

#include <X11/keysym.h>

#include <optional>
#include <utility>
#include <vector>

namespace kelo::tests {

class Chord : public InputFixture {
protected:
    void SetUp() override {
        watch();
        focusOther();
    }
};

using Changes = std::vector<Seen>;

TEST_F(Chord, IsSeenWithEachKeyOfEachSideInEitherOrder) {
    for (const unsigned controlKey : {XK_Control_L, XK_Control_R})
        for (const unsigned optionKey : {XK_Alt_L, XK_Alt_R}) {
            keyboard.down(controlKey);
            keyboard.down(optionKey);
            keyboard.up(optionKey);
            keyboard.up(controlKey);
            const Changes inOrder{
                {true, control}, {true, control | option}, {true, control}, {true, 0}};
            EXPECT_EQ(seen(), inOrder);
            keyboard.down(optionKey);
            keyboard.down(controlKey);
            keyboard.up(optionKey);
            keyboard.up(controlKey);
            const Changes crossed{
                {true, option}, {true, control | option}, {true, control}, {true, 0}};
            EXPECT_EQ(seen(), crossed);
        }
}

TEST_F(Chord, EndsWithTheLastOfTwoEqualKeys) {
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Control_R);
    keyboard.down(XK_Alt_L);
    keyboard.up(XK_Control_L);
    keyboard.up(XK_Control_R);
    keyboard.up(XK_Alt_L);
    const Changes expected{{true, control}, {true, control | option}, {true, option}, {true, 0}};
    EXPECT_EQ(seen(), expected);
}

TEST_F(Chord, CarriesTheOtherModifiersThatAreDown) {
    keyboard.down(XK_Shift_L);
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    keyboard.up(XK_Shift_L);
    keyboard.down(XK_Super_L);
    keyboard.up(XK_Super_L);
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
    const Changes expected{{true, shift},
                           {true, shift | control},
                           {true, shift | control | option},
                           {true, control | option},
                           {true, control | option | command},
                           {true, control | option},
                           {true, control},
                           {true, 0}};
    EXPECT_EQ(seen(), expected);
}

TEST_F(Chord, CapsLockIsCapsLockAloneAndNumLockIsNothing) {
    keyboard.tap(XK_Caps_Lock);
    keyboard.tap(XK_Num_Lock);
    keyboard.down(XK_Control_L);
    keyboard.up(XK_Control_L);
    keyboard.tap(XK_Caps_Lock);
    keyboard.tap(XK_Num_Lock);
    const Changes expected{
        {true, capsLock}, {true, capsLock | control}, {true, capsLock}, {true, 0}};
    EXPECT_EQ(seen(), expected);
}

TEST_F(Chord, KeysAndTheirRepetitionChangeNothing) {
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    keyboard.down(XK_a);
    until("a key repeats", [this] { return keyboard.pressesInOther() > 6; });
    keyboard.up(XK_a);
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
    const Changes expected{{true, control}, {true, control | option}, {true, control}, {true, 0}};
    EXPECT_EQ(seen(), expected);
}

TEST_F(Chord, StickyKeysMakeItOneKeyAfterTheOther) {
    keyboard.setStickyKeys(true);
    keyboard.tap(XK_Control_L);
    keyboard.tap(XK_Alt_L);
    const Changes made{{true, control}, {true, control | option}};
    EXPECT_EQ(seenSoFar(2), made);
    keyboard.tap(XK_a);
    const Changes ended{{true, 0}};
    EXPECT_EQ(seenSoFar(1), ended);
    keyboard.setStickyKeys(false);
    EXPECT_EQ(seen(), Changes{});
}

TEST_F(Chord, ThatIsDownWhenTheWatchBeginsIsSeenToEnd) {
    keyboard.down(XK_Control_L);
    keyboard.down(XK_Alt_L);
    input::KeyboardMonitors late;
    Changes seenLate;
    ASSERT_TRUE(late.addGlobalMonitor(platform::event_mask::flagsChanged,
                                      [&](const platform::Event& event) {
                                          seenLate.push_back({true, event.modifierFlags});
                                      }));
    keyboard.up(XK_Alt_L);
    keyboard.up(XK_Control_L);
    until("the end is seen", [&] { return !seenLate.empty() && seenLate.back().flags == 0; });
    const Changes expected{{true, control}, {true, 0}};
    EXPECT_EQ(seenLate, expected);
}

class ChordInABusyProgram : public InputFixture {};

TEST_F(ChordInABusyProgram, IsHeardBeforeAllElseThatIsReady) {
    int others = 0;
    // Older than the watch, so that of two equals it would come first.
    const guint busy = g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer count) -> gboolean {
            ++*static_cast<int*>(count);
            return G_SOURCE_CONTINUE;
        },
        &others, nullptr);
    std::optional<int> othersWhenHeard;
    ASSERT_TRUE(monitors.addGlobalMonitor(platform::event_mask::flagsChanged,
                                          [&](const platform::Event& event) {
                                              if (event.modifierFlags == control)
                                                  othersWhenHeard = others;
                                          }));
    keyboard.down(XK_Control_L);
    int othersBefore = 0;
    int othersSoFar = 0;
    until("the key is heard", [&] {
        othersBefore = std::exchange(othersSoFar, others);
        return othersWhenHeard.has_value();
    });
    g_source_remove(busy);
    keyboard.up(XK_Control_L);
    EXPECT_EQ(othersWhenHeard, othersBefore) << "others had their turn before it";
}

} // namespace kelo::tests
